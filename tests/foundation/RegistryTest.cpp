// Settings are found by name, survive a damaged file, and are not lost when several programs write.
#include <thread>

#include <gmock/gmock.h>

#include "foundation/file/XpSpecialFolder.h"
#include "foundation/platform/Paths.h"
#include "foundation/registry/SfReadGPUCalibrationRegistry.h"
#include "foundation/registry/SfRegistry.h"
#include "foundation/registry/SystemSettings.h"
#include "tests/foundation/ScopedVariable.h"
#include "tests/support/FullDisk.h"
#include "tests/support/TempFolder.h"

namespace {

constexpr std::uint32_t kReadWrite = XpRegistryRead | XpRegistryWrite;

class RegistryTest : public testing::Test {
 protected:
  TempFolder folder;
  ScopedVariable m_variable{"VRX_REGISTRY_DIR", folder.Path()};
};

TEST_F(RegistryTest, MissingKeysAreMadeByWritersOnly) {
  XpRegistry key;
  EXPECT_EQ(key.Open(u"Software\\A", 0, XpRegistryRead), XpErrFailed);
  EXPECT_EQ(key.Close(), XpErrFailed);
  EXPECT_EQ(folder.Count(), 0);
  ASSERT_EQ(key.Open(u"Software\\A\\B", 0, kReadWrite), XpOk);
  EXPECT_EQ(key.Close(), XpOk);
  EXPECT_EQ(key.Open(u"software/a", 77, XpRegistryRead), XpOk);  // above a key that is there
  EXPECT_EQ(key.Open(u"Software\\A", 1, XpRegistryRead), XpErrFailed);
  EXPECT_EQ(key.OpenRaw(u"Software/A/B", 0, XpRegistryRead), XpErrFailed);
  EXPECT_EQ(XpRegistryOpen(u"Software\\Other", 0, XpRegistryRead), nullptr);
}

TEST_F(RegistryTest, ValuesKeepTheirTypeAndNamesIgnoreCase) {
  XpRegistry key;
  ASSERT_EQ(key.Open(u"Software/A", 0, kReadWrite), XpOk);
  EXPECT_EQ(key.SetString(u"Text", u"\x3042\"\\"), XpOk);
  EXPECT_EQ(key.SetDword(u"Number", 0xFFFFFFFF), XpOk);
  EXPECT_EQ(key.SetString(u"a/b", u"1"), XpOk);
  const auto reader = XpRegistryOpen(u"SOFTWARE", 0, XpRegistryRead)->OpenSubKey(u"a");
  ASSERT_TRUE(reader);
  EXPECT_EQ(reader->GetString(u"TEXT", u""), u"\x3042\"\\");
  EXPECT_EQ(reader->GetDword(u"number", 0), 0xFFFFFFFFu);
  EXPECT_EQ(reader->GetString(u"A\\B", u""), u"1");
  EXPECT_TRUE(reader->GetBool(u"Number"));
  EXPECT_FALSE(reader->GetBool(u"a/b"));  // a text is no number
  EXPECT_EQ(reader->GetDword(u"Text", 5), 5u);
  EXPECT_EQ(reader->GetString(u"Number", u"none"), u"none");
  EXPECT_FALSE(reader->HasValue(u"other"));
  EXPECT_EQ(reader->SetDword(u"Number", 1), XpErrFailed);
  key.Close();
  EXPECT_EQ(key.SetDword(u"Number", 1), XpErrFailed);
  EXPECT_EQ(key.GetDword(u"Number", 9), 9u);
  EXPECT_EQ(key.OpenSubKey(u"x"), nullptr);
}

TEST_F(RegistryTest, DamagedFileGivesDefaultsAndIsKept) {
  const std::string deep =
      R"({"Software\\A": {"n": )" + std::string(100'000, '[') + std::string(100'000, ']') + "}}";
  for (const std::string& damage :
       {std::string(), std::string("[]"), std::string(R"({"Software\\A": {"n": 1})"), deep}) {
    const TempFolder own;
    const ScopedVariable variable("VRX_REGISTRY_DIR", own.Path());
    own.Write("current-user.json", damage);
    EXPECT_EQ(XpRegistryOpen(u"Software\\A", 0, XpRegistryRead), nullptr) << damage;
    EXPECT_EQ(own.Read("current-user.json"), damage);
    ASSERT_TRUE(XpRegistryOpen(u"Software\\B", 0, kReadWrite)) << damage;
    EXPECT_EQ(own.Read("current-user.json.damaged"), damage);
    EXPECT_TRUE(XpRegistryOpen(u"Software\\B", 0, XpRegistryRead));
  }
}

TEST_F(RegistryTest, ForeignValuesGiveDefaultsAndStayInTheFile) {
  folder.Write("current-user.json", R"({"Software\\A": {"n": true, "list": [1, {"x": null}], "below": -1,
      "large": 4294967296, "text": "kept"}, "note": "no key"})");
  const auto key = XpRegistryOpen(u"Software\\A", 0, kReadWrite);
  ASSERT_TRUE(key);
  for (const char16_t* name : {u"n", u"list", u"below", u"large"}) {
    EXPECT_EQ(key->GetDword(name, 5), 5u);
    EXPECT_EQ(key->GetString(name, u"none"), u"none");
    EXPECT_TRUE(key->HasValue(name));
  }
  EXPECT_EQ(key->GetString(u"text", u""), u"kept");
  EXPECT_EQ(key->SetDword(u"n", 7), XpOk);
  EXPECT_EQ(key->GetDword(u"n", 0), 7u);
  const std::string file = folder.Read("current-user.json");
  for (const char* part : {"-1", "4294967296", "null", "no key", "\"n\": 7"})
    EXPECT_THAT(file, testing::HasSubstr(part));
  EXPECT_EQ(folder.Count(), 2) << "the file and its lock";
}

TEST_F(RegistryTest, AStoreThatCannotBeReplacedStaysWithoutTemporaryFiles) {
  folder.Write("current-user.json", "damaged");
  std::filesystem::permissions(folder.Path() / "current-user.json", std::filesystem::perms::owner_read);
  EXPECT_FALSE(XpRegistryOpen(u"Software\\B", 0, kReadWrite)) << "it is write-protected";
  EXPECT_EQ(folder.Count(), 2) << "the file and its lock";
  std::filesystem::permissions(folder.Path() / "current-user.json", std::filesystem::perms::owner_all);
  {
    const FullDisk disk(3);
    EXPECT_FALSE(XpRegistryOpen(u"Software\\B", 0, kReadWrite));
  }
  EXPECT_EQ(folder.Count(), 2);
  folder.Write("current-user.json.damaged", "older");
  for (int i = 2; i <= 100; ++i) folder.Write("current-user.json.damaged-" + std::to_string(i), "older");
  EXPECT_FALSE(XpRegistryOpen(u"Software\\B", 0, kReadWrite)) << "no name is left to keep it under";
  EXPECT_EQ(folder.Read("current-user.json"), "damaged");
  EXPECT_EQ(folder.Count(), 102);
}

TEST_F(RegistryTest, ALinkedStoreStaysALink) {
  const TempFolder elsewhere;
  for (const char* before : {"{}", "damaged"}) {
    elsewhere.Write("settings", before);
    std::filesystem::remove(folder.Path() / "current-user.json");
    std::filesystem::create_symlink(elsewhere.Path() / "settings", folder.Path() / "current-user.json");
    EXPECT_TRUE(XpRegistryOpen(u"Software\\B", 0, kReadWrite));
    EXPECT_TRUE(std::filesystem::is_symlink(folder.Path() / "current-user.json"));
    EXPECT_THAT(elsewhere.Read("settings"), testing::HasSubstr("Software"));
  }
  EXPECT_EQ(folder.Read("current-user.json.damaged"), "damaged");
}

TEST_F(RegistryTest, TheRootKeyOpensAndAccessBitsAreChecked) {
  XpRegistry root;
  ASSERT_EQ(root.Open(u"", 0, XpRegistryRead), XpOk);
  EXPECT_EQ(folder.Count(), 0);
  XpRegistry key;
  ASSERT_EQ(key.Open(u"Software\\A", 0, XpRegistryWrite), XpOk);
  EXPECT_EQ(key.SetDword(u"n", 1), XpOk);
  EXPECT_EQ(key.GetDword(u"n", 9), 9u);
  EXPECT_FALSE(key.HasValue(u"n"));
  const auto below = root.OpenSubKey(u"Software\\A");
  ASSERT_TRUE(below);
  EXPECT_EQ(below->GetDword(u"n", 9), 1u);
  ASSERT_EQ(root.Open(u"\\", 0, kReadWrite), XpOk);
  EXPECT_EQ(root.SetString(u"Text", u"at the root"), XpOk);
  EXPECT_EQ(root.GetString(u"text", u""), u"at the root");
}

TEST_F(RegistryTest, ManyWritersLoseNothing) {
  constexpr int kWriters = 4;
  constexpr std::uint32_t kEach = 25;
  std::vector<std::thread> writers;
  for (int w = 0; w < kWriters; ++w) {
    writers.emplace_back([w] {
      XpRegistry key;
      EXPECT_EQ(key.Open(u"Software\\A", 0, kReadWrite), XpOk);
      for (std::uint32_t i = 0; i < kEach; ++i) {
        const std::string name = std::to_string(w) + "-" + std::to_string(i);
        EXPECT_EQ(key.SetDword(XpNarrowString(name).ToWide(), i), XpOk);
      }
    });
  }
  for (auto& writer : writers) writer.join();
  const auto document = vrx::registry::ReadStore(vrx::registry::Root::CurrentUser);
  EXPECT_EQ(document.keys.at(u"Software\\A").size(), kWriters * kEach);
}

TEST_F(RegistryTest, SectionsHaveTheirVersionFolder) {
  EXPECT_EQ(SfRegistryKeyPath(u"LBR", u"", u""), u"Software\\Kelo Corporation\\LBR");
  EXPECT_EQ(SfRegistryKeyPath(u"LBR", u"SGPUCLB", u"SharedInfo"),
            u"Software\\Kelo Corporation\\LBR\\SGPUCLB\\1.0\\SharedInfo");
  const auto key =
      XpRegistryOpen(u"Software\\Kelo Corporation\\LBR\\SGPUCLB", XpRegistryLocalMachine, kReadWrite);
  ASSERT_TRUE(key);
  key->SetString(u"CurrentVersion", u"2.5");
  EXPECT_EQ(SfSectionVersionPath(u"SGPUCLB"), u"Software\\Kelo Corporation\\LBR\\SGPUCLB\\2.5");
  EXPECT_FALSE(SfRegistryOpenRead(u"Common", u"Settings"));
  const auto settings = SfRegistryOpenWrite(u"Common", u"Settings");
  ASSERT_TRUE(settings);
  settings->SetDword(u"UILanguageId", 0x0411);
  EXPECT_EQ(vrx::registry::InterfaceLanguage(), u"ja-JP");
}

TEST_F(RegistryTest, DriveAndLibrarySettingsAreApplied) {
  const XpString product = SfRegistryKeyPath(u"LBR", u"", u"");
  XpRegistryOpen(product, XpRegistryLocalMachine, kReadWrite)->SetString(u"InstalledLocation", u"/opt/app");
  XpRegistryOpen(product + u"\\Drives", XpRegistryLocalMachine, kReadWrite)->SetString(u"Y", u"/machine");
  XpRegistryOpen(product + u"\\Drives", XpRegistryCurrentUser, kReadWrite)->SetString(u"y", u"/user");
  vrx::registry::ApplySystemSettings();
  EXPECT_EQ(vrx::platform::NativePath(u"Y:\\a"), "/user/a");
  EXPECT_EQ(XpLibraryPath(u"x.so", XpLibraryInstalled), u"/opt/app/x.so");
  XpSetInstalledLocation(nullptr);
  vrx::platform::SetDriveFolder('Y', "");
}

TEST_F(RegistryTest, CalibrationValuesAreRead) {
  const auto user = XpRegistryOpen(u"Software\\Test", XpRegistryCurrentUser, kReadWrite);
  user->SetDword(u"HardwareAssistType_TransBitrate", 0x00120034);
  user->SetDword(u"HardwareAssistType_STPD", 0);
  const SfReadGPUCalibrationRegistry reader(
      XpRegistryOpen(u"Software\\Test", XpRegistryCurrentUser, XpRegistryRead));
  std::uint32_t value = 9;
  EXPECT_TRUE(reader.GetTransBitrateLow(value) && value == 0x34) << value;
  EXPECT_TRUE(reader.GetTransBitrateHigh(value) && value == 0x12) << value;
  EXPECT_TRUE(reader.GetHardwareAssistSTPD(value) && value == 0) << value;
  EXPECT_FALSE(reader.GetHardwareAssistSJVTD(value));
  bool disabled = true;
  EXPECT_FALSE(reader.GetDisableNVIDIAEncode(disabled));
  XpRegistryOpen(u"Software\\Kelo Corporation\\LBR\\SGPUCLB\\1.0\\SharedInfo", XpRegistryLocalMachine,
                 kReadWrite)
      ->SetDword(u"DisableOPENCLEncode", 1);
  EXPECT_TRUE(reader.GetDisableOPENCLEncode(disabled) && disabled);
  EXPECT_TRUE(reader.GetDisableNVIDIAEncode(disabled) && !disabled);
}

}  // namespace
