# Prepares the public headers for doxygen. A comment of theirs serves all declarations up to the next
# blank line, and a comment before a blank line describes the whole family; doxygen wants a comment
# for each declaration, and such notes in the family's group:
#
# - A comment becomes a block, and is repeated before the other declarations that it serves, and for
#   the other names of one declaration.
# - Everything goes into the group that the file's own comment names by @ingroup.
# - Protected members, which are between the library's own classes, and destructors, deleted and
#   defaulted members without a comment are left out.

function code(line) {
  sub(/[ \t]*\/\/.*/, "", line)
  return line
}

# Prints text, some lines, as one block.
function block(text) {
  sub(/\n$/, "", text)
  print "/**" text " */"
}

/^[ \t]*\/\/\/( |$)/ {
  if (!gathering) comment = ""
  gathering = 1
  if ($2 == "@ingroup") group = $3
  text = $0
  sub(/^[ \t]*\/\/\//, "", text)
  comment = comment text "\n"
  next
}

{
  fresh = gathering
  gathering = 0
}

fresh && /^$/ && group != "" {
  print "/// @}"
  block(" @addtogroup " group "\n" comment)
  print "\n/// @addtogroup " group "\n/// @{"
  fresh = 0
}

/^[ \t]*protected:/ { sub(/protected/, "private") }

{
  # A blank line, a preprocessor line, the end of a class, or an access label.
  if (!fresh && $0 ~ /^[ \t]*($|#|}|\/\/|[a-z]+:$)/) comment = ""
  special = $0 ~ /~|= (default|delete);/
  if (!fresh && special) $0 = ""
  if (fresh || (comment != "" && $0 != "" && at_start && $0 !~ /\/\/\/</)) block(comment)
  if (comment != "" && $0 ~ /^ *[A-Za-z0-9_:]+ [a-z0-9]+(, [a-z0-9]+)+;/) {
    line = comment
    gsub(/\n/, " ", line)
    gsub(/, /, "; /** " line "*/ " $1 " ")
  }
  at_start = code($0) ~ /[;}][ \t]*$/ || $0 == ""
  if (code($0) ~ /\{[ \t]*$/) comment = ""
  print
}

/^#pragma once/ && group != "" { print "/// @addtogroup " group "\n/// @{" }

END { if (group != "") print "/// @}" }
