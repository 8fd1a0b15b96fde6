// RapidJSON as this folder uses it: the only place that includes it.
#ifndef TEMVAR_SETTINGS_RAPIDJSON_H_
#define TEMVAR_SETTINGS_RAPIDJSON_H_

#include "settings/rapidjson_stack.h"

#include <rapidjson/document.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/reader.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace temvar {

using JsonHeap = BoundedAllocator<std::numeric_limits<size_t>::max()>;

// A document's values, names and texts, freed together with it.
using JsonPool = rapidjson::MemoryPoolAllocator<JsonHeap>;
using JsonDocument = rapidjson::GenericDocument<rapidjson::UTF8<>, JsonPool, JsonHeap>;
using JsonValue = JsonDocument::ValueType;
using JsonMember = JsonValue::Member;

}  // namespace temvar

#endif  // TEMVAR_SETTINGS_RAPIDJSON_H_
