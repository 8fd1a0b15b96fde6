// Load, look-up and save of a settings file beside RapidJSON used directly for the same work, in
// one process. The argument is the number of members, half of them texts and half numbers.
#include <benchmark/benchmark.h>
#include <rapidjson/document.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>
#include <temvar/user_defaults.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

std::string Key(int64_t i) { return "setting number " + std::to_string(i); }

// The file of `count` members; made once.
std::string FileOf(int64_t count) {
  const auto path =
      std::filesystem::temp_directory_path() / ("temvar-bench-" + std::to_string(count) + ".json");
  InitUserDefaults("made", path.string().c_str());
  TMVUserDefaults* store = GetUserDefaults("made");
  if (!store->IsLoaded()) {
    std::string text = "{";
    for (int64_t i = 0; i < count; ++i) {
      text += (i == 0 ? "\"" : ",\"") + Key(i) + "\":";
      text += i % 2 == 0 ? std::to_string(i) : "\"the text of setting " + std::to_string(i) + "\"";
    }
    std::FILE* file = std::fopen(path.string().c_str(), "wb");
    std::fputs((text + "}").c_str(), file);
    std::fclose(file);
    InitUserDefaults("made", path.string().c_str());
    GetUserDefaults("made")->Save();
  }
  store->ReleaseDocument();
  return path.string();
}

std::vector<std::string> SomeKeys(int64_t count) {
  std::mt19937 random(1);
  std::vector<std::string> keys;
  for (int i = 0; i < 64; ++i) keys.push_back(Key(static_cast<int64_t>(random()) % count));
  return keys;
}

std::unique_ptr<rapidjson::Document> LoadDirectly(const std::string& path) {
  std::FILE* file = std::fopen(path.c_str(), "rb");
  std::fseek(file, 0, SEEK_END);
  std::string text(static_cast<size_t>(std::ftell(file)), '\0');
  std::rewind(file);
  benchmark::DoNotOptimize(std::fread(text.data(), 1, text.size(), file));
  std::fclose(file);
  auto document = std::make_unique<rapidjson::Document>();
  document->Parse(text.c_str());
  return document;
}

void Load(benchmark::State& state) {
  const std::string path = FileOf(state.range(0));
  for (auto _ : state) {
    InitUserDefaults("bench", path.c_str());
    GetUserDefaults("bench")->ReleaseDocument();
  }
}

void RapidLoad(benchmark::State& state) {
  const std::string path = FileOf(state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(LoadDirectly(path));
}

void LookUp(benchmark::State& state) {
  InitUserDefaults("bench", FileOf(state.range(0)).c_str());
  TMVUserDefaults* store = GetUserDefaults("bench");
  const std::vector<std::string> keys = SomeKeys(state.range(0));
  size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(store->GetInt(keys[i++ % keys.size()].c_str(), nullptr));
  }
  store->ReleaseDocument();
}

void RapidLookUp(benchmark::State& state) {
  const auto document = LoadDirectly(FileOf(state.range(0)));
  const std::vector<std::string> keys = SomeKeys(state.range(0));
  size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(document->FindMember(keys[i++ % keys.size()].c_str()));
  }
}

void Save(benchmark::State& state) {
  InitUserDefaults("bench", FileOf(state.range(0)).c_str());
  TMVUserDefaults* store = GetUserDefaults("bench");
  for (auto _ : state) store->Save();
  store->ReleaseDocument();
}

void RapidSave(benchmark::State& state) {
  const std::string path = FileOf(state.range(0));
  const auto document = LoadDirectly(path);
  for (auto _ : state) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    rapidjson::StringBuffer text;
    rapidjson::PrettyWriter<rapidjson::StringBuffer> writer(text);
    document->Accept(writer);
    std::fwrite(text.GetString(), 1, text.GetSize(), file);
    std::fclose(file);
  }
}

void Counts(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(10)->Arg(1000)->Arg(100000)->Unit(benchmark::kMicrosecond);
}

BENCHMARK(Load)->Apply(Counts);
BENCHMARK(RapidLoad)->Apply(Counts);
BENCHMARK(LookUp)->Apply(Counts);
BENCHMARK(RapidLookUp)->Apply(Counts);
BENCHMARK(Save)->Apply(Counts);
BENCHMARK(RapidSave)->Apply(Counts);

}  // namespace
