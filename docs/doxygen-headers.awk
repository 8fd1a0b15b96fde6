# The headers are written in plain comments; this makes them comments that Doxygen reads:
# - each header goes to its group of docs/groups.dox;
# - what Doxygen would take for a command or a tag is escaped, except in `code` and "quotations";
# - lines indented by three columns and more are a block of code;
# - a comment also documents the declarations that follow the first one without an empty line.
#   awk -f doxygen-headers.awk FILE.h

function group_of(file) {
  sub(/.*\//, "", file)
  if (is_cpp) return "cpp"
  if (is_c) return "cfunctions"
  if (file ~ /^(task|lock)/) return "jobs"
  if (file ~ /^user_defaults/) return "settings"
  if (file ~ /^android/) return "android"
  if (file ~ /zip|^binary_data/) return "archives"
  if (file ~ /^dbg_report/) return "crash"
  if (file ~ /^utility/) return "utilities"
  return "library"
}

# Doxygen takes a quotation that ends on its line as it is.
function escaped_words(text,    parts, count, i, result) {
  count = split(text, parts, "\"")
  for (i = 1; i <= count; ++i) {
    if (i % 2 == 1 || i == count) gsub(/[\\@<>#%]/, "\\\\&", parts[i])
    result = result (i > 1 ? "\"" : "") parts[i]
  }
  return result
}

function escaped_code(text) {
  gsub(/&/, "\\&amp;", text)
  gsub(/</, "\\&lt;", text)
  gsub(/>/, "\\&gt;", text)
  gsub(/[\\@#%]/, "\\\\&", text)
  gsub(/"/, "\\&quot;", text)
  return text
}

function escaped(text,    parts, count, i, result) {
  count = split(text, parts, "`")
  for (i = 1; i <= count; ++i) {
    # A code span can go on over the end of a line. One that doesn't becomes a tag: Doxygen ends a
    # span at an apostrophe.
    if (!in_span) {
      result = result escaped_words(parts[i])
      if (i < count) { in_span = 1; tag = i + 1 < count; result = result (tag ? "<code>" : "`") }
    } else {
      result = result (tag ? escaped_code(parts[i]) : parts[i])
      if (i < count) { in_span = 0; result = result (tag ? "</code>" : "`"); tag = 0 }
    }
  }
  return result
}

function comment_line(line) { block = block line "\n"; print line }

function end_code() {
  if (in_code) comment_line(indent "/// @endcode")
  in_code = 0
}

# The text of one line of a comment, without its slashes.
function put_comment(text) {
  if (text ~ /^   /) {
    if (!in_code) comment_line(indent "/// @code" (text ~ /^ *</ ? "{.xml}" : "{.cpp}"))
    in_code = 1
    comment_line(indent "/// " substr(text, 4))
    return
  }
  end_code()
  sub(/^ /, "", text)
  comment_line(indent "/// " escaped(text))
}

function open_group() { print "/// @addtogroup " group_of(FILENAME) "\n/// @{\n" }

# The headers of the C++ layer are those with its namespace.
BEGIN {
  while ((getline line < ARGV[1]) > 0) {
    if (line == "namespace tmv {") is_cpp = 1
    if (line ~ /^\/\*/) is_c = 1
  }
  close(ARGV[1])
}

# A C header: its comments become those of C++.
is_c {
  if (in_c || $0 ~ /^\/\*/) {
    ends = sub(/ *\*\/ *$/, "")
    if (in_c) sub(/^ *\*?/, ""); else sub(/^\/\*/, "")
    in_c = !ends
    $0 = "//" $0
    if (ends && $0 == "//") next
  } else if (match($0, /\/\* .* \*\/$/)) {
    $0 = substr($0, 1, RSTART - 1) "// " substr($0, RSTART + 3, RLENGTH - 6)
  }
}

FNR == 1 && !is_cpp && !is_c { open_group(); opened = 1 }

/^ *\/\// {
  match($0, /^ */)
  if (!was_comment) { block = ""; in_span = 0 }
  indent = substr($0, 1, RLENGTH)
  # What these headers say at their head describes the whole group.
  if (!opened) { print "/// @addtogroup " group_of(FILENAME) "\n///"; opened = 2 }
  put_comment(substr($0, RLENGTH + 3))
  was_comment = 1
  ended = 0
  next
}

{
  end_code()
  was_comment = 0
  if (opened == 2) { print ""; opened = 1; if (is_c) open_group() }
  match($0, /^ */)
  if ($0 == "" || RLENGTH < length(indent) || $0 ~ /^ *(}|#|public:|private:|protected:)/) {
    if ($0 == "" || RLENGTH < length(indent)) block = ""
  } else if (RLENGTH == length(indent) && ended && block != "") {
    printf "%s", block
  }
  if ($0 ~ /^#define/ && was_define && block != "") printf "%s", block
  was_define = $0 ~ /^#define/
  # A comment after a declaration.
  if (match($0, /[;,{(]  *\/\/ /)) {
    in_span = 0
    at = index(substr($0, RSTART), "//") + RSTART - 1
    $0 = substr($0, 1, at - 1) "///<" escaped(substr($0, at + 2))
  }
  # A group takes what is in a namespace only from inside it.
  if ($0 ~ /^}  \/\/ namespace tmv$/) print "/// @}\n"
  if (match($0, /^ */) && RLENGTH <= length(indent)) ended = $0 ~ /[;}]( *\/\/.*)?$/
  print
  if ($0 == "namespace tmv {") { print ""; open_group() }
}

END { if (!is_cpp) print "\n/// @}" }
