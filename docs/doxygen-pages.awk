# The documents are written for GitHub; this makes their links and code blocks ones that Doxygen
# follows: each heading gets a label of its page and its words, links to headings become links to
# these labels, and of the words after a fence only the language stays.
#   awk -f doxygen-pages.awk FILE.md

function page(file) {
  sub(/.*\//, "", file)
  sub(/\.md$/, "", file)
  return tolower(file)
}

function slug(text) {
  text = tolower(text)
  gsub(/[^a-z0-9 _-]/, "", text)
  gsub(/ /, "-", text)
  return text
}

/^```/ {
  if (!in_fence && match($0, /^```[a-z]+ /)) $0 = substr($0, 1, RLENGTH - 1)
  in_fence = !in_fence
  print
  next
}

in_fence { print; next }

/^##+ / {
  text = $0
  sub(/^#+ /, "", text)
  print $0 " {#" page(FILENAME) "-" slug(text) "}"
  next
}

{
  line = $0
  result = ""
  while (match(line, /\]\([^)]*\)/)) {
    target = substr(line, RSTART + 2, RLENGTH - 3)
    if (target !~ /^[a-z]+:/) {
      sub(/^(\.\.\/)+/, "", target)
      if (split(target, parts, "#") == 2)
        target = "#" (parts[1] == "" ? page(FILENAME) : page(parts[1])) "-" parts[2]
    }
    result = result substr(line, 1, RSTART + 1) target ")"
    line = substr(line, RSTART + RLENGTH)
  }
  print result line
}
