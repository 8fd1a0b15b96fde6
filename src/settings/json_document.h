// Reading and changing a settings document.
//
// Texts (names and strings) are blocks of the pool that values refer to, also the shortest ones,
// which RapidJSON by itself would keep inside the value: so a text keeps its address and content
// when its value is overwritten or moved.
#ifndef TEMVAR_SETTINGS_JSON_DOCUMENT_H_
#define TEMVAR_SETTINGS_JSON_DOCUMENT_H_

#include <memory>

#include "settings/rapidjson.h"

namespace temvar {

// A document whose root is an empty object.
std::unique_ptr<JsonDocument> NewJsonDocument();

// The document of a NUL-terminated text in strict JSON whose root is an object or an array; null if
// the text is anything else. The first NUL ends the text.
std::unique_ptr<JsonDocument> ParseJson(const char* text);

// The value of the first member called `key`, null if there is none.
JsonValue* FindMember(JsonValue& object, const char* key);

// A text value with a copy of `text` in `pool`.
JsonValue PoolText(const char* text, size_t length, JsonPool& pool);

// Appends a member; leaves `object` as it was when it throws std::bad_alloc.
void AppendMember(JsonValue& object, JsonValue& name, JsonValue& value, JsonPool& pool);

}  // namespace temvar

#endif  // TEMVAR_SETTINGS_JSON_DOCUMENT_H_
