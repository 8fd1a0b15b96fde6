// Memory that runs out in the services without files: text, the system, settings, manifests.
#include <string>

#include "faults/out_of_memory.h"
#include "support/manifest_builder.h"
#include "support/settings_store.h"

namespace {

using namespace test;

using ServicesOutOfMemory = SettingsTest;
TEMVAR_IN_A_PLAIN_PLACE(ServicesOutOfMemory);

TEST_P(ServicesOutOfMemory, Strings) {
  TMVUtilityString& strings = *TmvUtilityString();
  PutFile("file", kLongText);
  const std::string file = Path("file");
  const std::string search(2000, 'a');
  uint8_t bytes[] = {'a', 0xFF, 0};
  OutOfMemory memory;

  DO(strings.FreeString(strings.DupWideString(TMV_WIDE("text"))));
  TRY(strings.Utf8ToWide(kLongText));
  TRY(strings.WideToAnsi(TMV_WIDE("text")));
  TRY(strings.WideToUtf8(TMV_WIDE("text")));
  TRY(strings.Utf8ToAnsi(kLongText));
  TRY(strings.FormatString("%d %s %f", 1, kLongText, 1.5));
  TRY(strings.FormatWideString(TMV_WIDE("%d %f"), 1, 1.5));
  TRY(strings.CompareVersion("1.2", "1.3") + strings.IsNullOrEmpty("") +
          strings.SafeString(kLongText)[0] + strings.IsEmailAddress("a@b.c") +
          strings.IsBlankChar(' ') + strings.IsAllDigits("12") + strings.StartsWithDigit("1") +
          strings.SanitizeUtf8(bytes, 2, '?'),
      kNever);
  TRY(strings.HexToUInt64("ff", 2), kNever);
  TRY(strings.DupString(kLongText));
  TRY(strings.RegexFirstMatch("text 12", "[0-9]+|(x)"));
  TRY(strings.RegexFirstMatch(search.c_str(), "(a|b)*"));  // On a thread with a large stack.
  // libcrypto keeps its last errors.
  TRY(strings.Md5OfFile(file.c_str()), kFalse | kKeepsMemory);
  TRY(strings.Sha1OfString(kLongText), kFalse | kKeepsMemory);
  DO(strings.FreeString(strings.NewGuidString()));
}

TEST_P(ServicesOutOfMemory, SystemAndApplication) {
  TMVUtilitySys& sys = *TmvUtilitySys();
  TMVUtilityApp& app = *TmvUtilityApp();
  char text[64];
  std::tm time = {};
  bool flag = false;
  OutOfMemory memory;

  TRY(sys.GetAppDataPath());
  TRY(sys.GetDocumentsPath());
  TRY(sys.GetTempDirectory());
  TRY(sys.GetDownloadsPath());
  TRY(sys.GetBuildYear());
  DO(sys.FormatCurrentTime(text, sizeof(text), "%Y-%m-%d %H:%M:%S"));
  DO(sys.FormatTime(1'000'000'000, text, sizeof(text), "%Y-%m-%d %H:%M:%S"));
  TRY(sys.FormatSecondsSince(1'000'000'000, 2001));
  TRY(sys.FormatSecondsSince1970(1'000'000'000));
  TRY(sys.FormatSecondsSince2001(1'000'000));
  TRY(sys.FormatLocalTime(1'000'000));
  TRY(sys.FormatDuration(3723.0));
  TRY(sys.FormatSeconds(3723));
  TRY(sys.UtcTextToLocalText(&time, "2025-10-15 09:30:05"));
  TRY(sys.LocalTextToUtcText(&time, "2025-10-15 09:30:05"));
  TRY(sys.GetExecutableFileName());
  DO(sys.SleepMilliseconds(1), kNever);
  TRY(sys.AlwaysTrue() + sys.IsVistaOrLater() + sys.IsWindows7OrLater() + sys.IsWindows8OrLater() +
          sys.Is64BitSystem() + sys.Is64BitProcess() + sys.GetProcessId(),
      kNever);
  TRY(app.GetExecutablePath());
  TRY(app.GetInstallRoot());
  TRY(app.GetThemesDirectory());
  TRY(app.GetPluginsDirectory());
  TRY(app.GetApplicationDirectory());
  TRY(app.GetModuleDirectory(nullptr));
  DO(app.ExploreFolder(""));  // Nothing opens these.
  DO(app.OpenWithShell(""));
  TRY(app.NewUniqueId() != 0);
  DO(TmvUtilityString()->FreeString(app.NewPrefixedId(kLongText)));
  TRY((app.NextSerial() > 0) + app.ProgressPerMille(1, 2, 0, 1), kNever);
  DO(SetExitProgram(&flag); SetExitProgram(nullptr), kNever);
  TRY(TmvLock() && TmvTaskPool() && TmvTaskSchedular() && TmvUtilityApp() && TmvUtilityFile() &&
          TmvUtilityString() && TmvUtilitySys() && TmvUtilityUnzip(),
      kNever);
}

TEST_P(ServicesOutOfMemory, ManifestsAndCrashReports) {
  const Bytes document = ManifestBuilder({"manifest", "package", kLongText})
                             .Start(0, {{1, 2}, {1, kNone, 9}})
                             .Start(2, {{2, 2}, {2, 2}, {2, 2}, {2, 2}})
                             .Build();
  TMVAndroidManifest* manifest = nullptr;
  [[maybe_unused]] TMVDbgReport* const report = CreateTmvDbgReport();
  const auto size = static_cast<int32_t>(document.size());
  const auto renew = [&] {
    DestroyTmvAndroidManifest(manifest);
    manifest = CreateTmvAndroidManifest();
  };
  const auto decode = [&] { manifest->Decode(document.data(), size); };
  OutOfMemory memory{renew, [&] { return Take(manifest->GetAttributeValue("package")); }};

  DO(manifest->Decode(document.data(), size));
  TRY(manifest->GetAttributeValue("package"), 0, decode);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // They have handlers.
  DO(report->Install(TMV_WIDE("a folder for dumps/"), nullptr, nullptr));
#endif
  DO(DestroyTmvAndroidManifest(CreateTmvAndroidManifest()));
  DO(DestroyTmvDbgReport(CreateTmvDbgReport()));
  DestroyTmvAndroidManifest(manifest);
  DestroyTmvDbgReport(report);
}

TEST_P(ServicesOutOfMemory, Settings) {
  const std::string path = Path(kFile);
  TMVUserDefaults* store = nullptr;
  // Texts that need new memory of the document each time.
  const std::string text(100'000, 'x');
  const auto load = [&] { store = Load(R"({"a":1,"b":"text","c":[1,2],"t":"7,8,9"})"); };
  const auto document = [&] { return store == nullptr ? "" : Compact(store) + GetFile(kFile); };
  OutOfMemory memory{load, document};

  DO(store->SetString(kLongText, text.c_str(), nullptr), kKeepsMemory);
  // More members than the object has room for.
  DO(for (char key[] = "k"; key[0] < 'z'; ++key[0]) store->SetInt(key, 1, nullptr),
     kKeepsPart | kKeepsMemory);
  TRY(store->HasKey("a", nullptr) + store->GetString("b", nullptr)[0] +
          store->GetInt("a", nullptr) + store->IsLoaded() + store->GetFilePath()[0],
      kNever);
  TRY(store->GetArraySize(store->GetValue("c", nullptr)), kNever);
  TRY(store->GetValueInt(store->GetArrayElement(store->GetValue("c", nullptr), 1)) +
          store->GetValueInt(store->GetValue("none", nullptr)),
      kNever);
  TRY(store->GetValueString(
          store->GetMemberName(store->AdvanceMember(store->GetMemberBegin(nullptr), 1)))[0] +
          store->GetValueString(
              store->GetMemberValue(store->GetMemberBegin(store->GetRootValue())))[0] +
          (store->GetMemberEnd(store->GetRootValue()) != nullptr),
      kNever);
  TRY(store->GetIntTriple("t", nullptr).Third);
  DO(store->Save(), kSilent);
  TRY(store->StringifyValue(store->GetRootValue()));
  DO(store->ReleaseDocument(), kNever);
  TRY(InitUserDefaults("test", path.c_str()) && GetUserDefaults("test"));
  TRY(InitStandardUserDefaults(path.c_str()) && StandardUserDefaults());
}

}  // namespace
