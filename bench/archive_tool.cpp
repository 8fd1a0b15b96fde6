// One operation on archives or buffers in a process of its own, so that its time and memory can be
// measured beside other programs. scripts/bench-archives drives it.
//
//   archive_tool pack FOLDER ARCHIVE      archive_tool unpack ARCHIVE FOLDER
//   archive_tool deflate FILE             archive_tool inflate FILE
//   archive_tool zlib-deflate FILE        archive_tool zlib-inflate FILE   (zlib in one call)
//
// The operations on buffers print the seconds that they took of processor time, without the
// reading.
#include <temvar/temvar.h>
#include <zlib.h>

#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

namespace {

using Zip = std::unique_ptr<TMVUtilityZip, void (*)(TMVUtilityZip*)>;

bool Pack(const char* folder, const char* archive) {
  const Zip zip(CreateTmvUtilityZip(), DestroyTmvUtilityZip);
  zip->AddDirectory(folder, nullptr);
  return zip->WriteArchive(archive, nullptr);
}

bool Deflate(const BinaryDataResult& input, BinaryDataResult* output) {
  const Zip zip(CreateTmvUtilityZip(), DestroyTmvUtilityZip);
  return zip->DeflateBuffer(output, input.Data, input.Size, 6);
}

bool Inflate(const BinaryDataResult& input, BinaryDataResult* output) {
  return TmvUtilityUnzip()->InflateBuffer(output, input.Data, input.Size);
}

const Bytef* BytesOf(const BinaryDataResult& input) {
  return reinterpret_cast<const Bytef*>(input.Data);
}

bool ZlibDeflate(const BinaryDataResult& input, BinaryDataResult*) {
  uLongf size = compressBound(input.Size);
  std::vector<Bytef> output(size);
  return compress2(output.data(), &size, BytesOf(input), input.Size, 6) == Z_OK;
}

// The size of the contents must be known for this; the benchmark's are 64 MB.
bool ZlibInflate(const BinaryDataResult& input, BinaryDataResult*) {
  uLongf size = 64u << 20;
  std::vector<Bytef> output(size);
  return uncompress(output.data(), &size, BytesOf(input), input.Size) == Z_OK;
}

bool RunOnBuffer(bool (*operation)(const BinaryDataResult&, BinaryDataResult*), const char* file) {
  BinaryDataResult input = {};
  BinaryDataResult output = {};
  if (!TmvUtilityFile()->ReadWholeFile(&input, file)) return false;
  const std::clock_t start = std::clock();
  const bool result = operation(input, &output);
  std::printf("%.3f\n", static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
  FreeBinayDataResult(&output);
  FreeBinayDataResult(&input);
  return result;
}

bool Run(const std::vector<std::string>& words) {
  const std::string& name = words[0];
  if (words.size() == 3 && name == "pack") return Pack(words[1].c_str(), words[2].c_str());
  if (words.size() == 3 && name == "unpack") {
    return TmvUtilityUnzip()->ExtractArchive(words[1].c_str(), words[2].c_str());
  }
  if (words.size() != 2) return false;
  if (name == "deflate") return RunOnBuffer(Deflate, words[1].c_str());
  if (name == "inflate") return RunOnBuffer(Inflate, words[1].c_str());
  if (name == "zlib-deflate") return RunOnBuffer(ZlibDeflate, words[1].c_str());
  if (name == "zlib-inflate") return RunOnBuffer(ZlibInflate, words[1].c_str());
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> words(argv + 1, argv + argc);
  return !words.empty() && Run(words) ? 0 : 1;
}
