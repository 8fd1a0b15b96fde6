# The headers are written in plain comments; this makes them comments that Doxygen reads. What
# Doxygen would take for a command or a tag stands as it is.
/^ *\/\// {
  s/[\\@<>#%]/\\&/g
  s/^\( *\)\/\/ \{0,1\}/\1\/\/\/ /
}
/[;,{(]  *\/\/ / s/\/\/ /\/\/\/< /
