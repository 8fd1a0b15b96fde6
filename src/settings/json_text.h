#ifndef TEMVAR_SETTINGS_JSON_TEXT_H_
#define TEMVAR_SETTINGS_JSON_TEXT_H_

#include "settings/rapidjson.h"

namespace temvar {

// A text of JSON may grow to this size; beyond it the writers throw std::bad_alloc. A file with
// some 100,000 nested arrays would be 40 GB of indentation when written back.
inline constexpr size_t kMaxJsonText = size_t{1} << 30;

using JsonText = rapidjson::GenericStringBuffer<rapidjson::UTF8<>, BoundedAllocator<kMaxJsonText>>;

// Appends `value` to `out` for a file: each member and element on a line of its own, indented by
// four blanks a level, lines ended by LF, no LF at the end.
void WritePretty(const JsonValue& value, JsonText& out);

// Appends `value` to `out` without any white space between tokens.
void WriteCompact(const JsonValue& value, JsonText& out);

}  // namespace temvar

namespace rapidjson {

// The blanks of a deep level in one go, as RapidJSON does it for its own string buffer.
template <>
inline void PutN(temvar::JsonText& stream, char c, size_t count) {
  std::memset(stream.Push(count), c, count);
}

}  // namespace rapidjson

#endif  // TEMVAR_SETTINGS_JSON_TEXT_H_
