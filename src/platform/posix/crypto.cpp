#include "platform/posix/crypto.h"

#include <openssl/evp.h>
#include <uuid/uuid.h>

#include <cstring>
#include <memory>
#include <mutex>
#include <new>

#include "platform/posix/errors.h"

namespace {

// What a HCRYPTHASH points to.
struct Hash {
  struct FreeContext {
    void operator()(EVP_MD_CTX* held) const { EVP_MD_CTX_free(held); }
  };

  std::unique_ptr<EVP_MD_CTX, FreeContext> context{EVP_MD_CTX_new()};
};

// A context has no content: everything that needs one gets this number.
constexpr HCRYPTPROV kContext = 1;

BOOL Fail(DWORD error) {
  SetLastError(error);
  return FALSE;
}

Hash* FromHandle(HCRYPTHASH hash) { return reinterpret_cast<Hash*>(hash); }

}  // namespace

BOOL CryptAcquireContextW(HCRYPTPROV* context, LPCWSTR, LPCWSTR, DWORD, DWORD) {
  *context = kContext;
  return TRUE;
}

BOOL CryptReleaseContext(HCRYPTPROV, DWORD) { return TRUE; }

BOOL CryptCreateHash(HCRYPTPROV, ALG_ID algorithm, HCRYPTKEY, DWORD, HCRYPTHASH* hash) {
  const EVP_MD* const method = algorithm == CALG_MD5 ? EVP_md5() : EVP_sha1();
  auto created = std::make_unique<Hash>();
  // Memory is the one failure that goes out as an exception and not as a code.
  if (created->context == nullptr) throw std::bad_alloc();
  // libcrypto 3.5 looks methods up without locks, in a way that ThreadSanitizer can't follow.
  static std::mutex lookUp;
  const std::lock_guard<std::mutex> lock(lookUp);
  // A system that is set to approved algorithms only refuses MD5 here.
  if (EVP_DigestInit_ex(created->context.get(), method, nullptr) != 1) return Fail(NTE_BAD_ALGID);
  *hash = reinterpret_cast<HCRYPTHASH>(created.release());
  return TRUE;
}

BOOL CryptDestroyHash(HCRYPTHASH hash) {
  delete FromHandle(hash);
  return TRUE;
}

BOOL CryptHashData(HCRYPTHASH hash, const BYTE* data, DWORD size, DWORD) {
  EVP_MD_CTX* const context = FromHandle(hash)->context.get();
  return EVP_DigestUpdate(context, data, size) == 1 ? TRUE : Fail(NTE_FAIL);
}

BOOL CryptGetHashParam(HCRYPTHASH hash, DWORD parameter, BYTE* data, DWORD* size, DWORD) {
  EVP_MD_CTX* const context = FromHandle(hash)->context.get();
  if (parameter == HP_HASHSIZE) {
    const auto digestSize = static_cast<DWORD>(EVP_MD_CTX_get_size(context));
    *size = sizeof(digestSize);
    std::memcpy(data, &digestSize, sizeof(digestSize));
    return TRUE;
  }
  unsigned int digestSize = 0;
  if (EVP_DigestFinal_ex(context, data, &digestSize) != 1) return Fail(NTE_FAIL);
  *size = digestSize;
  return TRUE;
}

HRESULT CoCreateGuid(GUID* guid) {
  uuid_t bytes;
  // Random, as Windows makes them: one by time would carry the network card's address.
  uuid_generate_random(bytes);
  guid->Data1 = static_cast<uint32_t>(bytes[0]) << 24 | static_cast<uint32_t>(bytes[1]) << 16 |
                static_cast<uint32_t>(bytes[2]) << 8 | bytes[3];
  guid->Data2 = static_cast<uint16_t>(bytes[4] << 8 | bytes[5]);
  guid->Data3 = static_cast<uint16_t>(bytes[6] << 8 | bytes[7]);
  std::memcpy(guid->Data4, bytes + 8, sizeof(guid->Data4));
  return S_OK;
}
