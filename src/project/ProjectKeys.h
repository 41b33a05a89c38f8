// The keys of a project document with the type of each, in one table that the reader and the checker share.
#pragma once

#include <array>
#include <span>

#include "content/plist/XpIniKey.h"

namespace vrx::project {

using plist::Find;
using plist::Key;

inline constexpr Key kRoot{u"VRXWrapper", XpIniType::Dict};
inline constexpr Key kVideoTrack{u"VideoTrack", XpIniType::Array};
inline constexpr Key kAudioTrack{u"AudioTrack", XpIniType::Array};
inline constexpr Key kOutputSettings{u"OutputSettings", XpIniType::Dict};

inline constexpr Key kOutputFilePath{u"OutputFilePath", XpIniType::String};
inline constexpr Key kPainterEffect{u"PainterEffect", XpIniType::String};
inline constexpr Key kVideoOutputSettings{u"VideoOutputSettings", XpIniType::Dict};
inline constexpr Key kAudioOutputSettings{u"AudioOutputSettings", XpIniType::Dict};

inline constexpr Key kSourceFile{u"SourceFile", XpIniType::String};
inline constexpr Key kSourceType{u"SourceType", XpIniType::Int};
inline constexpr Key kStartTime{u"StartTime", XpIniType::Real};
inline constexpr Key kEndTime{u"EndTime", XpIniType::Real};
inline constexpr Key kInPosition{u"InPosition", XpIniType::Real};
inline constexpr Key kOutPosition{u"OutPosition", XpIniType::Real};
inline constexpr Key kEnableOverlay{u"EnableOverlay", XpIniType::Bool};

inline constexpr Key kVideoCodecType{u"VideoCodecType", XpIniType::Int};
inline constexpr Key kVideoSpecificationType{u"VideoSpecificationType", XpIniType::Int};
inline constexpr Key kWidth{u"Width", XpIniType::Int};
inline constexpr Key kHeight{u"Height", XpIniType::Int};
inline constexpr Key kTimeValue{u"TimeValue", XpIniType::Int};
inline constexpr Key kTimeScale{u"TimeScale", XpIniType::Int};
inline constexpr Key kAverageBitrate{u"AverageBitrate", XpIniType::Int};
inline constexpr Key kInterlace{u"Interlace", XpIniType::Bool};
inline constexpr Key kAvcEncoderMode{u"AvcEncoderMode", XpIniType::Int};
inline constexpr Key kForceRerendering{u"ForceRerendering", XpIniType::Bool};

inline constexpr Key kAudioCodecType{u"AudioCodecType", XpIniType::Int};
inline constexpr Key kChannel{u"Channel", XpIniType::Int};
inline constexpr Key kBitPerSample{u"BitPerSample", XpIniType::Int};
inline constexpr Key kSamplingRate{u"SamplingRate", XpIniType::Int};

inline constexpr std::array kWrapperKeys{kVideoTrack, kAudioTrack, kOutputSettings};
inline constexpr std::array kOutputKeys{kOutputFilePath, kPainterEffect, kVideoOutputSettings,
                                        kAudioOutputSettings};
inline constexpr std::array kClipKeys{kSourceFile, kSourceType,  kStartTime,    kEndTime,
                                      kInPosition, kOutPosition, kEnableOverlay};
inline constexpr std::array kVideoKeys{
    kVideoCodecType, kVideoSpecificationType, kWidth,     kHeight,         kTimeValue,
    kTimeScale,      kAverageBitrate,         kInterlace, kAvcEncoderMode, kForceRerendering};
inline constexpr std::array kAudioKeys{kAudioCodecType, kChannel, kBitPerSample, kSamplingRate};

}  // namespace vrx::project
