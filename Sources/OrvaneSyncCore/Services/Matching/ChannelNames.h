#pragma once

#include "OrvaneSyncCore/Models/MediaAsset.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// The pieces of a name that "_", "-", blanks and points separate, without empty ones; they are parts of
/// `text`.
std::vector<std::string_view> piecesOfName(std::string_view text);

/// The name of a recording in pieces, which distinguishes the files of one take from others. A recorder that
/// writes one file per channel puts the channel at the end of the name, as in T01_1.WAV, T01-CH2.WAV or
/// T01_Boom.WAV. Pure; any thread.
class ChannelName {
  public:
    explicit ChannelName(const MediaAsset& recording);

    /// Whether both names have the same beginning and all pieces in which they differ name a channel. One of
    /// the two may lack these pieces: T01.WAV beside T01_MIX.WAV. False for two equal names.
    bool differsOnlyInChannel(const ChannelName& other) const;
    /// The same, but false if one of these pieces is only a number: 01 and 02 may also be takes or parts.
    bool differsOnlyInChannelWord(const ChannelName& other) const;
    /// The number of pieces that are equal at the same position.
    std::size_t piecesInCommon(const ChannelName& other) const;

  private:
    struct Piece {
        std::string text; ///< lower case
        bool namesChannel = false;

        bool operator==(const Piece& other) const { return text == other.text; }
    };
    /// Whether `isAccepted` is true for all pieces in which the two differ; false if their first pieces
    /// differ, and for equal names.
    bool differsOnlyIn(bool (*isAccepted)(const Piece&), const ChannelName& other) const;

    std::vector<Piece> pieces_;
};

} // namespace orvane
