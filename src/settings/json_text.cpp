#include "settings/json_text.h"

#include <charconv>
#include <string_view>
#include <vector>

namespace temvar {
namespace {

using rapidjson::SizeType;
using Compact = rapidjson::Writer<JsonText, rapidjson::UTF8<>, rapidjson::UTF8<>, JsonHeap>;
using Pretty = rapidjson::PrettyWriter<JsonText, rapidjson::UTF8<>, rapidjson::UTF8<>, JsonHeap>;

void Append(std::string_view bytes, JsonText& out) {
  bytes.copy(out.Push(bytes.size()), bytes.size());
}

void AppendEscape(char byte, JsonText& out) {
  // No '/': like all other bytes from 0x20 up it is written unchanged.
  constexpr std::string_view kNamed = "\"\\\b\t\n\f\r";
  constexpr std::string_view kNames = "\"\\btnfr";
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const size_t place = kNamed.find(byte);
  if (place != kNamed.npos) {
    const char escape[] = {'\\', kNames[place]};
    Append({escape, sizeof(escape)}, out);
  } else {
    const auto code = static_cast<unsigned char>(byte);
    const char escape[] = {'\\', 'u', '0', '0', kDigits[code >> 4], kDigits[code & 15]};
    Append({escape, sizeof(escape)}, out);
  }
}

// A string between quotation marks: runs of bytes that need no escape are copied in one piece.
void AppendQuoted(std::string_view text, JsonText& out) {
  out.Put('"');
  size_t begin = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    const char byte = text[i];
    if (static_cast<unsigned char>(byte) < 0x20 || byte == '"' || byte == '\\') {
      Append(text.substr(begin, i - begin), out);
      AppendEscape(byte, out);
      begin = i + 1;
    }
  }
  Append(text.substr(begin), out);
  out.Put('"');
}

// One of RapidJSON's writers with our form of doubles and strings.
template <typename Base>
class TextWriter : public Base {
 public:
  explicit TextWriter(JsonText& out) : Base(out) {}

  // The format of "%g", but always with a decimal point: printf takes it from the host's locale.
  bool Double(double value) {
    char text[32];
    const auto end =
        std::to_chars(text, text + sizeof(text), value, std::chars_format::general, 6).ptr;
    return Base::RawValue(text, static_cast<size_t>(end - text), rapidjson::kNumberType);
  }

  // RapidJSON's own writes byte by byte and reserves six bytes for each, a product that it computes
  // in 32 bits and that overflows.
  bool String(const char* text, SizeType length, bool /*copy*/ = false) {
    Base::RawValue("", 0, rapidjson::kStringType);  // Comma, line end and indentation before it.
    AppendQuoted({text, length}, *Base::os_);
    return true;
  }
  bool Key(const char* text, SizeType length, bool copy = false) {
    return String(text, length, copy);
  }
};

// An object or array that has been opened, and its next member or element.
struct Level {
  const JsonValue* value;
  SizeType next;
};

template <typename Writer>
void Open(const JsonValue& value, Writer& writer, std::vector<Level>& levels) {
  value.IsObject() ? writer.StartObject() : writer.StartArray();
  levels.push_back({&value, 0});
}

// The next value to write; null when all levels are closed.
template <typename Writer>
const JsonValue* Next(Writer& writer, std::vector<Level>& levels) {
  while (!levels.empty()) {
    auto& [container, next] = levels.back();
    if (container->IsObject() && next < container->MemberCount()) {
      const JsonMember& member = container->MemberBegin()[next++];
      writer.Key(member.name.GetString(), member.name.GetStringLength());
      return &member.value;
    }
    if (container->IsArray() && next < container->Size()) return &container->Begin()[next++];
    container->IsObject() ? writer.EndObject(next) : writer.EndArray(next);
    levels.pop_back();
  }
  return nullptr;
}

// RapidJSON's own walk is recursive: a deep document would overflow the thread's stack.
template <typename Writer>
void Write(const JsonValue& root, Writer& writer) {
  std::vector<Level> levels;
  for (const JsonValue* value = &root; value != nullptr; value = Next(writer, levels)) {
    if (value->IsObject() || value->IsArray()) {
      Open(*value, writer, levels);
    } else {
      value->Accept(writer);
    }
  }
}

}  // namespace

void WritePretty(const JsonValue& value, JsonText& out) {
  TextWriter<Pretty> writer(out);
  writer.SetIndent(' ', 4);
  Write(value, writer);
}

void WriteCompact(const JsonValue& value, JsonText& out) {
  TextWriter<Compact> writer(out);
  Write(value, writer);
}

}  // namespace temvar
