#ifndef TEMVAR_UTILITY_STRING_H_
#define TEMVAR_UTILITY_STRING_H_

#include <cstdint>

#include "temvar/export.h"
#include "temvar/types.h"

// Lets the compiler check calls of FormatString, by the conversions of the system's runtime.
// `format` and `first` are positions of arguments, counted with the object as the first.
#if defined(__GNUC__)
#define TMV_PRINTF_LIKE(format, first) __attribute__((__format__(__printf__, format, first)))
#else
#define TMV_PRINTF_LIKE(format, first)
#endif

// Text: conversions between UTF-8, wide (UTF-16) and ANSI text, tests and patterns, formatting,
// digests and identifiers.
//
// Text that crosses an interface of the library as `char*` is NUL-terminated UTF-8 unless its
// operation says otherwise. ANSI text is in the system's ANSI code page (Windows-1252 elsewhere
// than on Windows).
//
// New text belongs to the caller, who releases it with FreeString and never with a free() of its
// own. The object has no state: any thread may call any operation at any time. Operations that
// make text throw std::bad_alloc.
class TMVUtilityString {
 public:
  // A new copy of `text`, which must not be null.
  virtual TmvWideChar* DupWideString(const TmvWideChar* text) = 0;

  // New wide text from UTF-8. Null and text that is not well-formed return an empty text, never a
  // part of it. The block always ends in two NUL units at least, so it also serves where the system
  // asks for a list that ends in two of them.
  virtual TmvWideChar* Utf8ToWide(const char* text) = 0;

  // New ANSI text. '?' replaces what the code page lacks. Null returns an empty text.
  virtual char* WideToAnsi(const TmvWideChar* text) = 0;

  // New UTF-8 text. Unpaired surrogates become U+FFFD. Null returns an empty text.
  virtual char* WideToUtf8(const TmvWideChar* text) = 0;

  // New ANSI text from UTF-8, by Utf8ToWide and WideToAnsi. Null returns an empty text.
  virtual char* Utf8ToAnsi(const char* text) = 0;

  // New text formatted with the printf conversions of the system's runtime, whole however long it
  // is: on Windows %I64d, three digits of exponent, no %zu. A format that the runtime refuses
  // returns an empty text.
  virtual char* FormatString(const char* format, ...) TMV_PRINTF_LIKE(2, 3) = 0;

  // The same in wide text, with the conversions of the Windows runtime: %s and %c take wide text,
  // %hs and %hc narrow text.
  virtual TmvWideChar* FormatWideString(const TmvWideChar* format, ...) = 0;

  // Compares dotted versions number by number: -1, 0 or 1. Text that is no number counts as 0, and
  // the version that runs out of numbers first is the smaller, also if the rest of the other is
  // zero: "1.2" comes before "1.2.0". Null comes before everything but null.
  virtual int32_t CompareVersion(const char* left, const char* right) = 0;

  // True for null and for an empty text.
  virtual bool IsNullOrEmpty(const char* text) = 0;

  // `text` itself, or for null an empty text that nobody releases. Never a copy.
  virtual const char* SafeString(const char* text) = 0;

  // True if the shape of an address, as in "name@host.domain", is anywhere in `text`, which
  // must not be null: a search with "[^@]+@[^.]+[.]{1}.+".
  virtual bool IsEmailAddress(const char* text) = 0;

  // True for space, tab and carriage return; a line feed is not blank.
  virtual bool IsBlankChar(int32_t character) = 0;

  // A new copy of `text`, which must not be null.
  virtual char* DupString(const char* text) = 0;

  // True if `text`, which must not be null, has digits 0 to 9 only and at least one.
  virtual bool IsAllDigits(const char* text) = 0;

  // New text: what the first match of `pattern` covers in `text`, byte by byte, or an empty text.
  // The pattern is an ECMAScript regular expression. Neither argument may be null. Throws
  // std::regex_error for a bad pattern.
  // A match may be long, but not endless, since the matcher recurses: up to 300,000 bytes are safe
  // in a 64-bit process and 30,000 in a 32-bit one; far longer texts are, if their matches are
  // shorter. A search that needs much stack runs on a thread that the call starts and waits for;
  // std::regex_error with error_stack is thrown if the system refuses that thread, or if the
  // pattern is so long that no stack is large enough.
  virtual char* RegexFirstMatch(const char* text, const char* pattern) = 0;

  // The value of `length` hexadecimal digits, which need no terminator. 0 for a length of 0; `text`
  // is then not read. No byte is refused: one with the bit 0x40 counts as a letter, any other as a
  // digit. Exact up to 2^53, rounded beyond; a value that doesn't fit is the largest number.
  virtual uint64_t HexToUInt64(const char* text, uint64_t length) = 0;

  // Releases text that the library made. Null does nothing.
  virtual void FreeString(void* block) = 0;

  // New text: the MD5 digest of the file at `path` as 32 lower-case hexadecimal characters, or an
  // empty text if the file can't be opened or read, or the system can't make the digest. Prints the
  // digest, or why there is none, to standard output.
  virtual char* Md5OfFile(const char* path) = 0;

  // New text: the SHA-1 digest of the bytes of `text` as 40 lower-case hexadecimal characters. Null
  // on failure, which is printed to standard output, and for a null text.
  virtual char* Sha1OfString(const char* text) = 0;

  // True if `text`, which must not be null, begins with a digit 0 to 9.
  virtual bool StartsWithDigit(const char* text) = 0;

  // Makes `size` bytes safe to show: control characters other than tab, line feed and carriage
  // return, and each byte of a broken UTF-8 sequence, are overwritten with `replacement`. Only the
  // shape of sequences counts: overlong forms, surrogates and values above U+10FFFF stay.
  // False for a null buffer, else true.
  virtual bool SanitizeUtf8(uint8_t* buffer, uint32_t size, uint8_t replacement) = 0;

  // New text: a fresh GUID as 36 characters without braces, in upper case but for the third group.
  // An empty text if the system can't make one.
  virtual char* NewGuidString() = 0;

 protected:
  ~TMVUtilityString() = default;
};

// The service; the same pointer on each call, valid while the library is loaded.
TMV_API TMVUtilityString* TmvUtilityString();

#endif  // TEMVAR_UTILITY_STRING_H_
