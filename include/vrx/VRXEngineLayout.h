// Compile-time proof that the records which cross to the engine have the offsets and sizes of its 32-bit
// interface. VRXEngine.h includes it in 32-bit builds; it declares nothing.
#pragma once

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

static_assert(sizeof(VRXTimeInfo) == 24);
static_assert(offsetof(VRXTimeInfo, value) == 8);
static_assert(offsetof(VRXTimeInfo, scale) == 16);

static_assert(sizeof(VRXProgressInfo) == 24);
static_assert(offsetof(VRXProgressInfo, processed) == 8);
static_assert(offsetof(VRXProgressInfo, total) == 16);

static_assert(sizeof(VRXVideoOutputSetting) == 64);
static_assert(offsetof(VRXVideoOutputSetting, codecType) == 8);
static_assert(offsetof(VRXVideoOutputSetting, specificationType) == 12);
static_assert(offsetof(VRXVideoOutputSetting, width) == 16);
static_assert(offsetof(VRXVideoOutputSetting, height) == 20);
static_assert(offsetof(VRXVideoOutputSetting, frameDuration) == 24);
static_assert(offsetof(VRXVideoOutputSetting, averageBitrate) == 48);
static_assert(offsetof(VRXVideoOutputSetting, interlace) == 52);
static_assert(offsetof(VRXVideoOutputSetting, avcEncoderMode) == 56);
static_assert(offsetof(VRXVideoOutputSetting, forceRerendering) == 60);

static_assert(sizeof(VRXAudioOutputSetting) == 16);
static_assert(offsetof(VRXAudioOutputSetting, codecType) == 4);
static_assert(offsetof(VRXAudioOutputSetting, channels) == 8);
static_assert(offsetof(VRXAudioOutputSetting, bitsPerSample) == 10);
static_assert(offsetof(VRXAudioOutputSetting, samplingRate) == 12);

static_assert(offsetof(VRXSourceStreamInfoBase, sourceType) == 8);
static_assert(offsetof(VRXSourceStreamInfoBase, startTime) == 16);
static_assert(offsetof(VRXSourceStreamInfoBase, endTime) == 40);

static_assert(sizeof(VRXPathHolder) == 4);
static_assert(sizeof(VRXFileSourceStreamInfo) == 72);
static_assert(offsetof(VRXFileSourceStreamInfo, path) == 64);

static_assert(sizeof(VRXBasebandSourceStreamInfo) == 112);
static_assert(offsetof(VRXBasebandSourceStreamInfo, rawInput) == 64);
static_assert(offsetof(VRXBasebandSourceStreamInfo, reserved68) == 68);
static_assert(offsetof(VRXBasebandSourceStreamInfo, reserved72) == 72);
static_assert(offsetof(VRXBasebandSourceStreamInfo, reservedTime) == 80);
static_assert(offsetof(VRXBasebandSourceStreamInfo, reserved104) == 104);
static_assert(offsetof(VRXBasebandSourceStreamInfo, reserved108) == 108);

static_assert(sizeof(VRXSourceStreamInfoArray) == 16);
static_assert(offsetof(VRXSourceStreamInfoArray, items) == 4);
static_assert(offsetof(VRXSourceStreamInfoArray, capacity) == 8);
static_assert(offsetof(VRXSourceStreamInfoArray, count) == 12);

static_assert(sizeof(VRXTimeline) == 36);
static_assert(offsetof(VRXTimeline, video) == 4);
static_assert(offsetof(VRXTimeline, audio) == 20);

static_assert(sizeof(VRXIntermediateRawOutputSetting) == 64);
static_assert(offsetof(VRXIntermediateRawOutputSetting, startTime) == 8);
static_assert(offsetof(VRXIntermediateRawOutputSetting, endTime) == 32);
static_assert(offsetof(VRXIntermediateRawOutputSetting, stage) == 56);
static_assert(offsetof(VRXIntermediateRawOutputSetting, format) == 60);

static_assert(sizeof(VRXMetaData) == 24);
static_assert(offsetof(VRXMetaData, kind) == 4);
static_assert(offsetof(VRXMetaData, flag) == 8);
static_assert(offsetof(VRXMetaData, language) == 10);
static_assert(offsetof(VRXMetaData, extra) == 12);
static_assert(offsetof(VRXMetaData, data) == 16);
static_assert(offsetof(VRXMetaData, size) == 20);

static_assert(sizeof(VRXMetaDataSetting) == 16);
static_assert(offsetof(VRXMetaDataSetting, capacity) == 4);
static_assert(offsetof(VRXMetaDataSetting, count) == 8);
static_assert(offsetof(VRXMetaDataSetting, items) == 12);

static_assert(sizeof(VRXSystemOutputSetting) == 40);
static_assert(offsetof(VRXSystemOutputSetting, systemType) == 4);
static_assert(offsetof(VRXSystemOutputSetting, outputFilePath) == 8);
static_assert(offsetof(VRXSystemOutputSetting, video) == 12);
static_assert(offsetof(VRXSystemOutputSetting, audio) == 16);
static_assert(offsetof(VRXSystemOutputSetting, metaData) == 20);
static_assert(offsetof(VRXSystemOutputSetting, rawOutput) == 24);
static_assert(offsetof(VRXSystemOutputSetting, rawRangeCount) == 28);
static_assert(offsetof(VRXSystemOutputSetting, rawRangeCapacity) == 32);
static_assert(offsetof(VRXSystemOutputSetting, rawRanges) == 36);

#pragma GCC diagnostic pop
