// The functions that the module exports, declared for those who link the engine without loading it. Used by
// the engine's tests.
#pragma once

#include "vrx/VRXEngineExtras.h"

#define VRX_ENGINE_EXPORT extern "C" __attribute__((visibility("default")))

/// See vrx/VRXEngine.h for the types, and the README beside this file for the results.
VRX_ENGINE_EXPORT std::int32_t VRX_CreateVRX(VRXHandle* engine);
/// Releases the sequences that are left, too.
VRX_ENGINE_EXPORT std::int32_t VRX_ReleaseVRX(VRXHandle* engine);
VRX_ENGINE_EXPORT std::int32_t VRX_CreateSequence(VRXHandle engine, VRXTimeline* timeline,
                                                  VRXSystemOutputSetting* output, IVRXSequence** sequence);
VRX_ENGINE_EXPORT std::int32_t VRX_ReleaseSequence(VRXHandle engine, IVRXSequence** sequence);
/// `codec` and `specification` are the values of VRXVideoOutputSetting.
VRX_ENGINE_EXPORT std::int32_t VRX_IsSmartRenderingCapable(VRXHandle engine, std::uint32_t codec,
                                                           std::uint32_t specification);
VRX_ENGINE_EXPORT std::int32_t VRX_SetSTPVSetting(VRXHandle engine, const void* data, std::uint32_t size);
VRX_ENGINE_EXPORT void VRX_SetLogCallback(VRXLogFunction log, void* context);
/// VRXEngineOk with the facts in `probe`, or a result of EngineResult.h with the cause.
VRX_ENGINE_EXPORT std::int32_t VRX_ProbeSource(const char16_t* path, VRXSourceProbe* probe);
VRX_ENGINE_EXPORT std::int32_t VRX_RenderFrame(VRXTimeline* timeline, VRXSystemOutputSetting* output,
                                               std::uint64_t frame, void* buffer, std::uint32_t size);
VRX_ENGINE_EXPORT std::int32_t VRX_GetRenderSummary(VRXRenderSummary* summary);
VRX_ENGINE_EXPORT std::int32_t VRX_SetRenderOverrides(const VRXRenderOverrides* overrides);
VRX_ENGINE_EXPORT void VRX_SetSpanCallback(VRXSpanFunction spans, void* context);
VRX_ENGINE_EXPORT std::int32_t VRX_CreateJoin(VRXHandle engine, const VRXPieces* pieces,
                                              IVRXSequence** sequence);
