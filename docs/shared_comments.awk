# A comment of the public headers serves all declarations up to the next blank line; doxygen wants
# one for each. Repeats it before the others, on their own lines, so that line numbers stay right.
# Likewise for several names in one declaration. The reference leaves out protected members, which
# are between the library's own classes, and defaulted ones without a comment of their own.

function code(line) {
  sub(/[ \t]*\/\/.*/, "", line)
  return line
}

/^[ \t]*\/\/\/ / {
  if (!in_comment) comment = ""
  in_comment = 1
  text = $0
  sub(/^[ \t]*\/\/\/ /, "", text)
  comment = comment text " "
  print
  next
}

/^[ \t]*protected:/ { sub(/protected/, "private") }

{
  # A blank line, a preprocessor line, the end of a class, or an access label.
  if ($0 ~ /^[ \t]*($|#|}|\/\/|[a-z]+:$)/) comment = ""
  if (!in_comment && $0 ~ /= default;/) $0 = ""
  if (comment != "" && $0 != "" && !in_comment && at_start && $0 !~ /\/\/\/</) printf "/** %s*/ ", comment
  if (comment != "" && $0 ~ /^ *[A-Za-z0-9_:]+ [a-z0-9]+(, [a-z0-9]+)+;/) gsub(/, /, "; /** " comment "*/ " $1 " ")
  in_comment = 0
  at_start = code($0) ~ /[;}][ \t]*$/
  if (code($0) ~ /\{[ \t]*$/) comment = ""
  print
}
