// Drives the library through its public face with the scripted engine, and records what is reported to the
// host.
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include <dlfcn.h>
#include <gtest/gtest.h>

#include "tests/src/ProjectText.h"
#include "tests/src/ScriptedEngine.h"
#include "tests/support/TempFolder.h"
#include "vrx/VRXWrapper.h"

class RecordingCallback final : public IVRXWrapperCallback {
 public:
  std::function<void()> onStart;
  std::function<void()> onLast;  // after the end or the error
  std::function<void(std::uint32_t)> onProgress;

  void OnRenderStart() override {
    Note("start");
    if (onStart) onStart();
  }
  void OnRenderEnd() override { Finish("end"); }
  void OnRenderError(std::uint32_t code) override {
    char text[16];
    std::snprintf(text, sizeof(text), "error %04x", code);
    Finish(text);
  }
  void OnRenderProgress(std::uint32_t percentage) override {
    Note(std::to_string(percentage));
    if (onProgress) onProgress(percentage);
  }

  std::vector<std::string> WaitForEnd() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_finished; });
    return m_reports;
  }
  std::vector<std::string> GetReports() {
    const std::scoped_lock lock(m_mutex);
    return m_reports;
  }

 private:
  void Note(const std::string& event) {
    const std::scoped_lock lock(m_mutex);
    m_reports.push_back(event);
  }
  void Finish(const std::string& event) {
    {
      const std::scoped_lock lock(m_mutex);
      m_reports.push_back(event);
      m_finished = true;
      m_changed.notify_all();
    }
    if (onLast) onLast();
  }

  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::vector<std::string> m_reports;
  bool m_finished = false;
};

class WrapperTest : public testing::Test {
 protected:
  void SetUp() override {
    m_module = dlopen(SCRIPTED_ENGINE_PATH, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(m_module, nullptr) << dlerror();
    script = reinterpret_cast<GetEngineScriptFunction>(dlsym(m_module, "GetEngineScript"))();
    script->createEngine = script->createSequence = script->releaseSequence = script->smartRendering = 0;
    script->slices = {{.processed = 100, .ends = true}};
    script->onSlice = nullptr;
    script->calls.clear();
    script->gpuBlocks.clear();
    ASSERT_EQ(VRXWrapper::CreateVRXWrapper(true, &wrapper), 0);
    wrapper->SetCallback(&callback);
  }
  void TearDown() override {
    if (wrapper != nullptr) wrapper->Release();
    EXPECT_EQ(script->liveEngines, 0);
    EXPECT_EQ(script->liveSequences, 0);
    script->onSlice = nullptr;
    dlclose(m_module);
  }

  void LoadProject() {
    ProjectText project;
    project.videoTrack = ClipText("a.mp4", "0", "1000");
    SetProject(project);
  }
  /// What is reported to the host in a render of the project that was set.
  std::vector<std::string> Render() {
    wrapper->StartRender();
    return callback.WaitForEnd();
  }
  void Release() {
    wrapper->Release();
    wrapper = nullptr;
  }
  void SetProject(const ProjectText& project) {
    const std::string path = folder.Write("project.vrx", project.Text());
    wrapper->SetProjectFile(XpNarrowString(path).ToWide());
  }

  TempFolder folder;
  EngineScript* script = nullptr;
  RecordingCallback callback;
  IVRXWrapper* wrapper = nullptr;

 private:
  void* m_module = nullptr;
};
