#pragma once

#include "FCPXMLKit/model/Model.h"
#include "OrvaneSyncCore/Models/WildTrack.h"
#include "OrvaneSyncCore/Services/Export/ExportSettings.h"

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace orvane {

/// The finished document and what the user should know of it.
struct ExportResult {
    std::string fcpxmlString;
    int syncClipCount = 0; ///< sync-clips in events, those without sound included, offspeed variants not
    int multicamCount = 0;
    int nativeRateCount = 0;           ///< offspeed clips at the sensor's rate, without sound
    int projectRateCount = 0;          ///< offspeed clips at normal speed
    int sourceMediaCount = 0;          ///< whole files in the bin of source media
    int eventCount = 0;                ///< all events of the document
    int sceneEventCount = 0;           ///< those that stand for a scene; 0 unless events are split
    std::vector<std::string> warnings; ///< one line per skipped or doubtful clip
};

/// Why there is no document at all.
class ExportError : public std::runtime_error {
  public:
    enum class Kind { noGroups };

    static ExportError noGroups() { return {Kind::noGroups, "No sync groups to export"}; }
    Kind kind() const { return kind_; }

  private:
    ExportError(Kind kind, const char* description) : std::runtime_error(description), kind_(kind) {}
    Kind kind_;
};

/// Turns clips into a document. Pure functions of their arguments; any thread.
///
/// Rates are frames per second. A rate that no document can hold (not finite, rounding to 0, beyond a
/// million) counts as absent where there is another to take, and as 24 where there is none.
namespace FCPXMLExporter {

/// Clips that are excluded are left out; a clip that cannot be built becomes a warning. Throws ExportError
/// when no clip is left, fcpxml::FCPXMLError, and Stopped, asked for at each clip.
ExportResult exportDocument(const SyncGroupList& groups, const std::vector<WildTrack>& wildTracks,
                            const ExportSettings& settings, const std::stop_token& stop = {});

/// What a document makes of a clip.
enum class ClipKind : std::uint8_t { none, withSound, withoutSound };
ClipKind clipKind(const SyncGroup& group, const ExportSettings& settings);

/// The names in Final Cut Pro, by group, without the offspeed tag.
using NamesByGroup = std::unordered_map<UUID, std::string>;
NamesByGroup exportClipNames(const SyncGroupList& groups, const ExportSettings& settings);

// Times. A product of seconds and rate is cut to whole frames after 0.00001 of a frame was added with its
// sign, never rounded up to the next one. It is taken with the number as it is passed; what a frame lasts is
// that of the exact rate which the number stands for. So rates come from `usableRate` or `clipRate`, which
// are exact: at 23.976 itself a second and a thousandth has 23 frames.

fcpxml::Time frameDurationTime(double fps);
/// Nothing for an absent duration, one not above 0, and one beyond 2^53 frames.
std::optional<fcpxml::Time> durationTime(std::optional<double> seconds, double fps);
/// Of a picture, to its last frame, however long the file's own sound lasts. It has one frame at least: a
/// file may state its length in thousandths of a second.
std::optional<fcpxml::Time> pictureDuration(const MediaAsset& video, double fps);
/// Nothing for an absent text and one that does not parse. `counted` is the rate of the timecode; absent:
/// that of `fps`, fractional rates near 30 and 60 counting in drop frame.
std::optional<fcpxml::Time> timecodeToTime(const std::optional<std::string>& text, double fps,
                                           std::optional<TimecodeFrameRate> counted = std::nullopt);
/// Where the picture begins on the timecode axis, on a frame of `fps`.
std::optional<fcpxml::Time> pictureStartTime(const MediaAsset& video, double fps);
/// The same with the label read at a corrected rate, where one is given and the label exists at it: where the
/// picture lies beside others, whatever the file says.
std::optional<fcpxml::Time> correctedPictureStartTime(const MediaAsset& video, double fps,
                                                      std::optional<TimecodeFrameRate> corrected);
/// Zero below a whole frame; negative for an earlier moment.
fcpxml::Time manualOffsetTime(double seconds, double fps);
/// Exact to the sample where the file has a time reference.
std::optional<fcpxml::Time> audioStartTime(const MediaAsset& asset);
/// Where the first sample lies on the clip's axis, without manual and global offset: as far behind the start
/// of the picture as the recording's own start lies behind the picture's label, exactly, moved as matching
/// moved it (by a day across midnight, by a correction). Where one of them has no start, by the sync offset,
/// to the sample.
fcpxml::Time audioPlaceTime(const SyncGroup& group, const AudioMatch& match, double fps,
                            const ExportSettings& settings);
/// All samples of a file of sound, exactly. Nothing for an absent duration and one not above 0.
std::optional<fcpxml::Time> soundDuration(std::optional<double> seconds, int sampleRate);
/// What a clip takes of a sound asset of that duration: its whole frames, so that no clip ends behind its
/// asset; all of what is shorter than a frame, so that none has no length.
fcpxml::Time soundLength(const std::optional<fcpxml::Time>& duration, double fps);
/// 29.97 and 59.94, by the rate alone.
bool isDropFrame(double fps);
/// By the timecode's own rate where the file states it, else by that of the clip's times.
fcpxml::TcFormat tcFormat(const MediaAsset& video, double fps);
/// 1000 frames: what a file without a duration gets.
fcpxml::Time fallbackDuration(double fps);
/// That of the clip in a document with these settings.
double clipRate(const MediaAsset& video, const ExportSettings& settings);

// Resources.

/// The resources of a document in the making, and the only source of their identifiers.
class ResourceList {
  public:
    /// "r1", "r2" and so on.
    std::string nextID();
    void reserve(std::size_t count) { items_.reserve(count); }
    void add(fcpxml::ResourceItem item) { items_.push_back(std::move(item)); }
    const std::vector<fcpxml::ResourceItem>& items() const { return items_; }
    std::vector<fcpxml::ResourceItem> take() { return std::move(items_); }

  private:
    int counter_ = 0;
    std::vector<fcpxml::ResourceItem> items_;
};

/// The file behind an asset, in the form that the document's version has for it.
void setMedia(fcpxml::Asset& asset, const FileURL& url, const ExportSettings& settings);
/// On its own timecode, in frames of `clipRate`.
fcpxml::Asset videoAsset(const MediaAsset& video, std::string id, std::string formatID,
                         const ExportSettings& settings);
/// The file's own rate and size.
fcpxml::Format nativeFormat(const MediaAsset& video, std::string id, const ExportSettings& settings);
/// Without name, start and duration.
fcpxml::Asset audioAsset(const MediaAsset& audio, std::string id, int channelsIfUnknown,
                         const ExportSettings& settings);
/// A recording on its own timecode.
fcpxml::Asset recordingAsset(const MediaAsset& audio, std::string id, const ExportSettings& settings);
/// Whole Hz; 48000 where the file does not say.
int audioRate(const MediaAsset& audio);

// One clip.

/// The resources that a clip refers to.
struct ClipResources {
    std::string videoAssetID;
    std::vector<std::string> audioAssetIDs; ///< one per audio match, in order; empty for a copy of another
    std::string altFormatID;                ///< the container's
    std::string nativeFormatID;             ///< the clip's own
    std::string audioFormatID;
};

/// Nothing for a group without audio.
std::optional<fcpxml::SyncClip> buildSyncClip(const SyncGroup& group, const ClipResources& resources,
                                              const std::string& fcpName, const ExportSettings& settings);
/// The same frame for a group without audio; adds the resources it needs. Nothing without a duration.
std::optional<fcpxml::SyncClip> buildMOSSyncClipWrapper(const SyncGroup& group, ResourceList& resources,
                                                        const std::string& altFormatID,
                                                        const std::string& fcpName,
                                                        const ExportSettings& settings);
/// An adjustment of the volume where the gain is worth one.
fcpxml::AdjustAudioVideo syncClipMasterGainAdjust(const SyncGroup& group);

/// The sound side of a clip.
struct AudioChain {
    std::vector<fcpxml::AnchorItem> anchored;         ///< under the picture
    std::vector<fcpxml::AudioRoleSource> roleSources; ///< one per running number of the clip's channels
};
/// `fps` is the rate of the clip's positions.
AudioChain buildAudioChain(const SyncGroup& group, const std::vector<std::string>& audioAssetIDs,
                           const std::string& audioFormatID, double fps, const ExportSettings& settings);
/// Such as "dialogue.Boom": what a file by itself says of its channel. `track` counts from 1.
std::string audioRoleName(int track, const MediaAsset& audio, const ExportSettings& settings);
/// "Mix", "Boom", "Lav 1", "Lav 2" and so on.
std::string defaultSubrole(int track);
/// Seconds; 0 for a clip before the first that the offset applies to.
double effectiveGlobalAudioOffset(const SyncGroup& group, const ExportSettings& settings, double fps);
/// By which all sound of a clip is later: its manual offset and the global one, each in whole frames.
fcpxml::Time soundShift(const SyncGroup& group, const ExportSettings& settings, double fps);

// Several cameras.

/// A camera of a multicam clip: the whole synchronized clip is its angle.
struct CameraClip {
    const SyncGroup* group = nullptr;
    fcpxml::SyncClip clip;
};
struct BuiltMulticam {
    fcpxml::Media media; ///< the resource
    fcpxml::MCClip clip; ///< what refers to it in an event
};

/// The clips, by id, that rolled at the same moment: the first of each list is the one that all others of it
/// overlap; clips that only touch do not. A list keeps the order of the groups. A clip without a duration or
/// a start is in no list.
std::vector<std::vector<UUID>> findMulticamGroups(const SyncGroupList& groups, const MatchRules& rules = {});
/// Nothing for fewer than two cameras.
std::optional<BuiltMulticam> buildMulticam(std::vector<CameraClip> cameras, const std::string& altFormatID,
                                           const NamesByGroup& clipNames, const ExportSettings& settings,
                                           ResourceList& resources);
/// Such as "Cam A": by the letter that the camera gave its file, else by the place, from 0. Two cameras may
/// get the same name.
std::string deriveCameraName(const MediaAsset& from, std::size_t index);
/// The angle of a camera: "angle_" and its name, lower case, blanks as "_".
std::string angleID(const std::string& cameraName);
/// The names of the cameras of one multicam clip, no two with one name or one angle. Where files state one
/// letter, their folders tell them apart ("Cam A CARD_2"), in one folder a number ("Cam A 2"). Where a file
/// states none, a folder such as "CAM_B" names the camera; without one it takes its place, or the next place
/// whose letter no other camera has.
std::vector<std::string> cameraNames(const std::vector<const MediaAsset*>& videos);
/// What Final Cut Pro is to render to; where the choice is left open, the codec that most sources have.
std::string resolveMulticamCodec(MulticamCodec requested, const std::vector<const MediaAsset*>& sources);
/// The clip whose scene event takes the multicam clip: that of the scene with the most angles, the earliest
/// among equals. Angles of different scenes add a warning. Nothing unless events are split.
///
/// `sceneBucketByGroupID` holds the names of the scene events, so the warning names events, not bare scenes,
/// and scenes that the pattern gives one name to are one: with the pattern "{scene}" it says "(12, 13)".
std::optional<UUID> multicamBucketGroupID(const std::vector<const SyncGroup*>& groups,
                                          const NamesByGroup& sceneBucketByGroupID, bool splitEnabled,
                                          std::vector<std::string>& warnings);

// What is known of a clip besides its picture and sound.

/// From the report, else from the recorder; as written. Nothing when neither says anything.
std::optional<std::string> bestSceneAleIxml(const SyncGroup& group);
std::optional<std::string> bestTakeAleIxml(const SyncGroup& group);
/// The text of the notes field.
std::optional<std::string> buildNotesString(const SyncGroup& group, const ExportSettings& settings,
                                            const std::vector<std::string>& lockitVideoNotes);
/// The name of the clip's scene event; nothing for a clip without a scene.
std::optional<std::string> sceneEventName(const SyncGroup& group, const std::string& pattern,
                                          const std::string& eventName);

/// The clips divided by scene: an item with a key goes to the event of that name, events in the order of
/// their names, all others to the fallback event behind them. Never without an event.
std::vector<fcpxml::Event>
assembleSceneEvents(std::vector<fcpxml::EventItem> items,
                    const std::vector<std::optional<std::string>>& bucketKeyByIndex,
                    const std::string& fallbackEventName);

} // namespace FCPXMLExporter
} // namespace orvane
