#include "platform/posix/crypto.h"

#include <openssl/evp.h>
#include <uuid/uuid.h>

#include <cstring>
#include <memory>
#include <new>

#include "platform/posix/errors.h"

namespace {

// What a HCRYPTHASH points to. The digest is kept once it was read, as it can be read again.
struct Hash {
  struct FreeContext {
    void operator()(EVP_MD_CTX* held) const { EVP_MD_CTX_free(held); }
  };

  std::unique_ptr<EVP_MD_CTX, FreeContext> context{EVP_MD_CTX_new()};
  DWORD size = 0;
  bool finished = false;
  unsigned char value[EVP_MAX_MD_SIZE] = {};
};

// A context has no content: everything that needs one gets this number.
constexpr HCRYPTPROV kContext = 1;

BOOL Fail(DWORD error) {
  SetLastError(error);
  return FALSE;
}

const EVP_MD* Algorithm(ALG_ID algorithm) {
  if (algorithm == CALG_MD5) return EVP_md5();
  if (algorithm == CALG_SHA1) return EVP_sha1();
  return nullptr;
}

Hash* FromHandle(HCRYPTHASH hash) { return reinterpret_cast<Hash*>(hash); }

// Copies a result out by the rules for `data` and `*size`.
BOOL Return(const void* value, DWORD valueSize, BYTE* data, DWORD* size) {
  // `*size` is set on every way, so that a caller with too little room learns what to bring.
  const DWORD room = *size;
  *size = valueSize;
  if (data == nullptr) return TRUE;
  if (room < valueSize) return Fail(ERROR_MORE_DATA);
  std::memcpy(data, value, valueSize);
  return TRUE;
}

}  // namespace

BOOL CryptAcquireContextW(HCRYPTPROV* context, LPCWSTR container, LPCWSTR provider, DWORD type,
                          DWORD flags) {
  if (context == nullptr || container != nullptr || provider != nullptr || type != PROV_RSA_FULL ||
      flags != CRYPT_VERIFYCONTEXT) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  *context = kContext;
  return TRUE;
}

BOOL CryptReleaseContext(HCRYPTPROV context, DWORD) {
  return context == kContext ? TRUE : Fail(ERROR_INVALID_PARAMETER);
}

BOOL CryptCreateHash(HCRYPTPROV context, ALG_ID algorithm, HCRYPTKEY key, DWORD flags,
                     HCRYPTHASH* hash) {
  if (context != kContext || key != 0 || flags != 0 || hash == nullptr) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  const EVP_MD* const method = Algorithm(algorithm);
  if (method == nullptr) return Fail(NTE_BAD_ALGID);
  auto created = std::make_unique<Hash>();
  // Memory is the one failure that goes out as an exception and not as a code.
  if (created->context == nullptr) throw std::bad_alloc();
  // A system that is set to approved algorithms only refuses MD5 here.
  if (EVP_DigestInit_ex(created->context.get(), method, nullptr) != 1) return Fail(NTE_BAD_ALGID);
  created->size = static_cast<DWORD>(EVP_MD_get_size(method));
  *hash = reinterpret_cast<HCRYPTHASH>(created.release());
  return TRUE;
}

BOOL CryptDestroyHash(HCRYPTHASH hash) {
  if (hash == 0) return Fail(ERROR_INVALID_PARAMETER);
  delete FromHandle(hash);
  return TRUE;
}

BOOL CryptHashData(HCRYPTHASH hash, const BYTE* data, DWORD size, DWORD flags) {
  if (hash == 0 || flags != 0 || (data == nullptr && size != 0)) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  Hash& target = *FromHandle(hash);
  // The digest was read: from then on its input is closed, as on Windows.
  if (target.finished) return Fail(NTE_BAD_HASH_STATE);
  return EVP_DigestUpdate(target.context.get(), data, size) == 1 ? TRUE : Fail(NTE_FAIL);
}

BOOL CryptGetHashParam(HCRYPTHASH hash, DWORD parameter, BYTE* data, DWORD* size, DWORD flags) {
  if (hash == 0 || size == nullptr || flags != 0) return Fail(ERROR_INVALID_PARAMETER);
  Hash& source = *FromHandle(hash);
  if (parameter == HP_HASHSIZE) return Return(&source.size, sizeof(source.size), data, size);
  if (parameter != HP_HASHVAL) return Fail(NTE_BAD_TYPE);
  if (!source.finished) {
    if (EVP_DigestFinal_ex(source.context.get(), source.value, nullptr) != 1) return Fail(NTE_FAIL);
    source.finished = true;
  }
  return Return(source.value, source.size, data, size);
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
