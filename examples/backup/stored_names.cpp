#include "stored_names.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>
#include <string_view>

#include "support/text.h"

namespace backup {

namespace {

constexpr std::string_view kPrefix = "_backup/";
constexpr std::string_view kFolder = "folder ";

// Calls `visit` for each part between slashes until it returns false; whether it never did.
template <typename Visit>
bool EachPart(std::string_view name, Visit&& visit) {
  for (;;) {
    const size_t slash = name.find('/');
    if (!visit(name.substr(0, slash))) return false;
    if (slash == std::string_view::npos) return true;
    name.remove_prefix(slash + 1);
  }
}

// A device of Windows, such as "nul" or "COM1.txt".
bool IsDevice(std::string_view part) {
  constexpr std::string_view kDevices = " con prn aux nul com lpt ";
  std::string base(part.substr(0, part.find('.')));
  for (char& c : base) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c | 0x20 : c);
  if (base.size() == 4 && base[3] >= '0' && base[3] <= '9') base.pop_back();
  return base.size() == 3 && kDevices.find(' ' + base + ' ') != std::string_view::npos;
}

bool IsStorablePart(std::string_view part) {
  constexpr std::string_view kRefused = "\\:*?\"<>|";
  if (part.empty() || part.back() == '.' || part.back() == ' ' || IsDevice(part)) {
    return false;
  }
  return std::all_of(part.begin(), part.end(), [&](char c) {
    return c >= ' ' && c < 127 && kRefused.find(c) == std::string_view::npos;
  });
}

bool StaysInside(std::string_view name) {
  return EachPart(
      name, [](std::string_view part) { return !part.empty() && part != "." && part != ".."; });
}

// One name takes one line: line ends, and the mark itself, are written as numbers.
std::string Escaped(const std::string& name) {
  std::string text;
  for (const char c : name) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= ' ' && c != '%') {
      text += c;
      continue;
    }
    constexpr char kDigits[] = "0123456789ABCDEF";
    text.append({'%', kDigits[byte >> 4], kDigits[byte & 15]});
  }
  return text;
}

std::string Unescaped(const std::string& text) {
  std::string name;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      name += text[i];
      continue;
    }
    name += static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16));
    i += 2;
  }
  return name;
}

[[noreturn]] void Refuse(const std::filesystem::path& file) {
  throw std::runtime_error(support::Utf8FromPath(file) + " is damaged");
}

}  // namespace

bool IsStorableName(const std::string& name) {
  std::string_view start = std::string_view(name).substr(0, kPrefix.size() - 1);
  const bool isOurs = std::equal(start.begin(), start.end(), kPrefix.begin(), kPrefix.end() - 1,
                                 [](char a, char b) { return (a | 0x20) == (b | 0x20); });
  return !isOurs && EachPart(name, IsStorablePart);
}

std::string NumberedName(size_t number) {
  return std::string(kPrefix) + std::to_string(number + 1);
}

bool WriteNames(const Folder& folder) {
  std::ofstream out(support::PathFromUtf8(folder.namesFile), std::ios::binary);
  out << kFolder << (folder.holdsOwnFiles ? "" : Escaped(folder.name)) << '\n';
  for (const File& file : folder.files) {
    if (file.stored != file.name) out << file.stored << ' ' << Escaped(file.name) << '\n';
  }
  return static_cast<bool>(out.flush());
}

StoredNames ReadNames(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  StoredNames stored;
  std::string line;
  if (!std::getline(in, line) || !line.starts_with(kFolder)) Refuse(file);
  try {
    stored.folder = Unescaped(line.substr(kFolder.size()));
    while (std::getline(in, line)) {
      const size_t blank = line.find(' ');
      const std::string key = line.substr(0, blank);
      if (blank == std::string::npos || !key.starts_with(kPrefix)) Refuse(file);
      stored.names[key] = Unescaped(line.substr(blank + 1));
    }
  } catch (const std::logic_error&) {  // No number where one is due.
    Refuse(file);
  }
  const bool foreign = std::any_of(stored.names.begin(), stored.names.end(),
                                   [](const std::pair<const std::string, std::string>& name) {
                                     return !StaysInside(name.first) || !StaysInside(name.second);
                                   });
  if (foreign || (!stored.folder.empty() && !StaysInside(stored.folder))) Refuse(file);
  return stored;
}

}  // namespace backup
