# Gives the plain comments of a header the form that Doxygen reads. A comment belongs to the declaration behind it, and
# to the overloads that follow that one directly, so that a getter and its setter share one. The comments use no
# commands and no markup: what would be one stands for itself.

function shown(text) {
  gsub(/[\\@<>#%]/, "\\\\&", text)
  return text
}

# The comment at the head of a header with functions outside of any class and namespace: without it Doxygen leaves
# them out.
/^#define [A-Z_]+_H$/ {
  print
  head = 1
  next
}
/^ *\/\/ / || /^ *\/\/$/ {
  if (!commented) kept = ""
  sub(/\/\//, "")
  line = "///" shown($0)
  kept = kept line "\n"
  if (head) print "/// @file"
  head = 0
  print line
  commented = 1
  next
}
{
  name = ""
  if ($0 ~ /^inline constexpr const char\*/) name = "a text constant"
  else if ($0 ~ /^ *using /) name = "an alias"
  else if (match($0, /[A-Za-z_0-9]+\(/)) name = substr($0, RSTART, RLENGTH)
  if (!commented && name != "" && name == last) printf "%s", kept
  if (!commented && name != last) kept = ""
  if (name != "" || commented) last = name
  if ($0 ~ /^ *$/) last = ""
  commented = 0
  if (match($0, /[;,{] +\/\/ /)) $0 = substr($0, 1, RSTART) " ///< " shown(substr($0, RSTART + RLENGTH))
  print
}
