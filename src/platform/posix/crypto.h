// The part of the CryptoAPI that makes digests, and identifiers.
#ifndef TEMVAR_PLATFORM_POSIX_CRYPTO_H_
#define TEMVAR_PLATFORM_POSIX_CRYPTO_H_

#include "platform/posix/win32_types.h"

using ALG_ID = unsigned int;
using HCRYPTPROV = ULONG_PTR;
using HCRYPTKEY = ULONG_PTR;
using HCRYPTHASH = ULONG_PTR;

inline constexpr DWORD PROV_RSA_FULL = 1;
inline constexpr DWORD CRYPT_VERIFYCONTEXT = 0xF0000000;
inline constexpr ALG_ID CALG_MD5 = 0x8003;
inline constexpr ALG_ID CALG_SHA1 = 0x8004;
inline constexpr DWORD HP_HASHVAL = 2;
inline constexpr DWORD HP_HASHSIZE = 4;

// Error codes: an algorithm that this system refuses, a failure inside the provider.
inline constexpr DWORD NTE_BAD_ALGID = 0x80090008;
inline constexpr DWORD NTE_FAIL = 0x80090020;

// A context without keys. REQUIRES: null names of container and provider, PROV_RSA_FULL,
// CRYPT_VERIFYCONTEXT. All functions return FALSE on failure, which GetLastError reports.
BOOL CryptAcquireContextW(HCRYPTPROV* context, LPCWSTR container, LPCWSTR provider, DWORD type,
                          DWORD flags);
BOOL CryptReleaseContext(HCRYPTPROV context, DWORD flags);

// A digest in the making. REQUIRES: CALG_MD5 or CALG_SHA1; `key` and `flags` are 0, here and below.
BOOL CryptCreateHash(HCRYPTPROV context, ALG_ID algorithm, HCRYPTKEY key, DWORD flags,
                     HCRYPTHASH* hash);
BOOL CryptDestroyHash(HCRYPTHASH hash);

// Adds bytes. REQUIRES: the digest hasn't been read yet.
BOOL CryptHashData(HCRYPTHASH hash, const BYTE* data, DWORD size, DWORD flags);

// HP_HASHSIZE returns the digest's size as a DWORD, HP_HASHVAL the digest, which ends it. `*size`
// becomes the size of the value. REQUIRES: room for it in `data`.
BOOL CryptGetHashParam(HCRYPTHASH hash, DWORD parameter, BYTE* data, DWORD* size, DWORD flags);

struct GUID {
  uint32_t Data1;
  uint16_t Data2;
  uint16_t Data3;
  uint8_t Data4[8];
};

// A fresh random identifier (version 4).
HRESULT CoCreateGuid(GUID* guid);

#endif  // TEMVAR_PLATFORM_POSIX_CRYPTO_H_
