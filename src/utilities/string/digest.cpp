// Digests by the system's CryptoAPI, and identifiers. What the digests print is documented, to the
// last blank.
#include <cinttypes>
#include <cstdio>
#include <string>
#include <string_view>

#include "platform/win32.h"
#include "utilities/file/owned_handles.h"
#include "utilities/string/text.h"
#include "utilities/string/utility_string_impl.h"

namespace temvar {

namespace {

constexpr DWORD kReadSize = 1024;

// Larger than the digests that they hold (16 and 20 bytes): the system checks the room itself.
constexpr DWORD kMd5BufferSize = 32;
constexpr DWORD kSha1BufferSize = 64;

// Owners of what the CryptoAPI returns.
class CryptContext {
 public:
  CryptContext() = default;
  ~CryptContext() {
    if (context_ != 0) CryptReleaseContext(context_, 0);
  }
  CryptContext(const CryptContext&) = delete;
  CryptContext& operator=(const CryptContext&) = delete;

  // A context for digests only: no key container is opened or made.
  bool Acquire() {
    return CryptAcquireContextW(&context_, nullptr, nullptr, PROV_RSA_FULL, CRYPT_VERIFYCONTEXT);
  }
  HCRYPTPROV get() const { return context_; }

 private:
  HCRYPTPROV context_ = 0;
};

class CryptHash {
 public:
  CryptHash() = default;
  ~CryptHash() {
    if (hash_ != 0) CryptDestroyHash(hash_);
  }
  CryptHash(const CryptHash&) = delete;
  CryptHash& operator=(const CryptHash&) = delete;

  bool Create(const CryptContext& context, ALG_ID algorithm) {
    return CryptCreateHash(context.get(), algorithm, 0, 0, &hash_);
  }
  HCRYPTHASH get() const { return hash_; }

 private:
  HCRYPTHASH hash_ = 0;
};

// The error code as the printed texts take it.
int LastError() { return static_cast<int>(GetLastError()); }

// Appends the two characters of a byte.
void AppendHex(std::string& text, BYTE byte) {
  constexpr char kDigits[] = "0123456789abcdef";
  text += kDigits[byte >> 4];
  text += kDigits[byte & 15];
}

// Feeds the whole file to the digest.
bool HashFile(const FileHandle& file, const CryptHash& hash) {
  BYTE buffer[kReadSize];
  DWORD read = 0;
  for (;;) {
    if (!ReadFile(file.get(), buffer, kReadSize, &read, nullptr)) {
      std::printf("ReadFile failed: %d\n", LastError());
      return false;
    }
    if (read == 0) return true;
    if (!CryptHashData(hash.get(), buffer, read, 0)) {
      std::printf("CryptHashData failed: %d\n", LastError());
      return false;
    }
  }
}

// The digest as text, printed on the way; empty after a failure, which has been printed.
std::string Md5Text(const char* path) {
  // What printf makes of a null text is left open by the language.
  const char* const shownPath = path == nullptr ? "(null)" : path;
  const WideText widePath = ToWide(path);
  // Readers are welcome, writers are not: a digest of a file that changes belongs to no version of
  // it.
  const FileHandle file(CreateFileW(widePath.get(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
  if (!file.IsOpen()) {
    std::printf("Error opening file %s\nError: %d\n", shownPath, LastError());
    return {};
  }
  CryptContext context;
  if (!context.Acquire()) {
    std::printf("CryptAcquireContext failed: %d\n", LastError());
    return {};
  }
  CryptHash hash;
  if (!hash.Create(context, CALG_MD5)) {
    std::printf("CryptCreateHash failed: %d\n", LastError());
    return {};
  }
  if (!HashFile(file, hash)) return {};
  BYTE digest[kMd5BufferSize];
  DWORD size = sizeof(digest);
  if (!CryptGetHashParam(hash.get(), HP_HASHVAL, digest, &size, 0)) {
    std::printf("CryptGetHashParam failed: %d\n", LastError());
    return {};
  }
  std::string text;
  for (DWORD i = 0; i < size; ++i) AppendHex(text, digest[i]);
  std::printf("MD5 hash of file %s is: %s\n", shownPath, text.c_str());
  return text;
}

// CryptHashData takes 32 bits of size at a time.
bool HashBytes(const CryptHash& hash, std::string_view bytes) {
  constexpr size_t kMost = 0x40000000;
  while (!bytes.empty()) {
    const std::string_view part = bytes.substr(0, kMost);
    if (!CryptHashData(hash.get(), reinterpret_cast<const BYTE*>(part.data()),
                       static_cast<DWORD>(part.size()), 0)) {
      return false;
    }
    bytes.remove_prefix(part.size());
  }
  return true;
}

// Prints why there is no SHA-1 and returns the result for that. `what` ends in the blanks that its
// text has before the code: the texts differ in them.
char* Sha1Failed(const char* what) {
  const uint32_t error = GetLastError();
  std::printf("\n%sError=0x%.8" PRIx32 "\n", what, error);
  return nullptr;
}

}  // namespace

char* TMVUtilityStringImpl::Md5OfFile(const char* path) { return NewNarrowText(Md5Text(path)); }

char* TMVUtilityStringImpl::Sha1OfString(const char* text) {
  // Null for a failure, where Md5OfFile returns an empty text: hosts test each as it is documented.
  if (text == nullptr) return nullptr;
  CryptContext context;
  if (!context.Acquire()) return Sha1Failed("CryptAcquireContext failed, ");
  CryptHash hash;
  if (!hash.Create(context, CALG_SHA1)) return Sha1Failed("CryptCreateHash failed,  ");
  if (!HashBytes(hash, text)) return Sha1Failed("CryptHashData failed,  ");
  DWORD hashSize = 0;
  DWORD size = sizeof(hashSize);
  if (!CryptGetHashParam(hash.get(), HP_HASHSIZE, reinterpret_cast<BYTE*>(&hashSize), &size, 0)) {
    return Sha1Failed("CryptGetHashParam failed, ");
  }
  BYTE digest[kSha1BufferSize];
  if (hashSize > sizeof(digest)) {
    std::printf("\nOutput buffer (%d) is not sufficient, Required Size = %d\n",
                static_cast<int>(sizeof(digest)), static_cast<int>(hashSize));
    return nullptr;
  }
  if (!CryptGetHashParam(hash.get(), HP_HASHVAL, digest, &hashSize, 0)) {
    return Sha1Failed("CryptGetHashParam failed,  ");
  }
  std::string hex;
  for (DWORD i = 0; i < hashSize; ++i) AppendHex(hex, digest[i]);
  // The block's zeros are the terminator.
  char* const result = NewBlock<char>(size_t{hashSize} * 2 + 2);
  hex.copy(result, hex.size());
  return result;
}

char* TMVUtilityStringImpl::NewGuidString() {
  constexpr size_t kBlockSize = 64;
  GUID guid;
  if (CoCreateGuid(&guid) != S_OK) return NewBlock<char>(1);
  char* const text = NewBlock<char>(kBlockSize);
  const uint32_t first = guid.Data1;
  // The third group is in lower case, unlike the others: readers of the texts know it so.
  std::snprintf(text, kBlockSize, "%08" PRIX32 "-%04X-%04x-%02X%02X-%02X%02X%02X%02X%02X%02X",
                first, guid.Data2, guid.Data3, guid.Data4[0], guid.Data4[1], guid.Data4[2],
                guid.Data4[3], guid.Data4[4], guid.Data4[5], guid.Data4[6], guid.Data4[7]);
  return text;
}

}  // namespace temvar
