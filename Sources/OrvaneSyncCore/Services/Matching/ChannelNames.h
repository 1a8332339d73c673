#pragma once

#include "OrvaneSyncCore/Models/MediaAsset.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// What "_", "-", blanks and points divide, without empty ones; parts of `text`.
std::vector<std::string_view> piecesOfName(std::string_view text);

/// The name of a recording in pieces, by which the files of one take are distinguished from others: recorders
/// that write a file a channel put the channel at the end of the name, as in T01_1.WAV, T01-CH2.WAV or
/// T01_Boom.WAV. Pure; any thread.
class ChannelName {
  public:
    explicit ChannelName(const MediaAsset& recording);

    /// Whether both have the same beginning and the pieces in which they differ all name a channel. One of
    /// the two may lack them: T01.WAV lies beside T01_MIX.WAV. Two equal names do not differ.
    bool differsOnlyInChannel(const ChannelName& other) const;
    /// The same without those of which a piece is a number alone: 01 and 02 may be takes or parts as well.
    bool differsOnlyInChannelWord(const ChannelName& other) const;
    /// In how many pieces the two agree, place by place.
    std::size_t piecesInCommon(const ChannelName& other) const;

  private:
    struct Piece {
        std::string text; ///< lower case
        bool namesChannel = false;

        bool operator==(const Piece& other) const { return text == other.text; }
    };
    /// Whether all pieces are accepted in which the two differ; false where they begin with another one, and
    /// for equal names.
    bool differsOnlyIn(bool (*isAccepted)(const Piece&), const ChannelName& other) const;

    std::vector<Piece> pieces_;
};

} // namespace orvane
