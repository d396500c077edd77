# Translates one of the documents in docs/ to the language of man(7). Understands what these use:
# headings, paragraphs, fenced code, tables, and `code` and **bold** in a line.
# usage: awk -v title=ULODB2 -v section=7 -v name=ulodb2 -v purpose=TEXT -v source=FILE
#            -f from-markdown.awk FILE

# Characters that roff or its terminals would change.
function plain(text) {
  gsub(/\\/, "\\e", text)
  gsub(/-/, "\\-", text)
  gsub(/'/, "\\(aq", text)
  gsub(/`/, "\\(ga", text)
  gsub(/\^/, "\\(ha", text)
  gsub(/~/, "\\(ti", text)
  gsub(/"/, "\\(dq", text)
  return text
}

function print_line(text) {
  print (text ~ /^[.']/ ? "\\&" : "") text
}

# Plain text with `code` and **bold** in bold.
function markup(text, result, place, mark, rest, end) {
  result = ""
  while (match(text, /`|\*\*/)) {
    place = RSTART
    mark = substr(text, place, RLENGTH)
    rest = substr(text, place + RLENGTH)
    end = index(rest, mark)
    if (end == 0)
      break
    result = result plain(substr(text, 1, place - 1)) "\\fB" plain(substr(rest, 1, end - 1)) "\\fP"
    text = substr(rest, end + length(mark))
  }
  return result plain(text)
}

# Prints text in lines of at most 78 characters.
function fill(text, words, count, i, line) {
  count = split(text, words, / +/)
  line = ""
  for (i = 1; i <= count; ++i) {
    if (line != "" && length(line) + 1 + length(words[i]) > 78) {
      print_line(line)
      line = ""
    }
    line = line (line == "" ? "" : " ") words[i]
  }
  if (line != "")
    print_line(line)
}

function begin_paragraph() {
  if (!after_title)
    print ".PP"
  after_title = 0
}

function end_paragraph() {
  if (paragraph != "") {
    begin_paragraph()
    fill(markup(paragraph))
  }
  paragraph = ""
}

# Sets cell[1..] and returns their number. "\|" in a cell and bars within code do not end it.
function split_row(row, count, i, character, in_code) {
  count = 1
  cell[1] = ""
  sub(/^\| */, "", row)
  sub(/ *\| *$/, "", row)
  for (i = 1; i <= length(row); ++i) {
    character = substr(row, i, 1)
    if (character == "`")
      in_code = !in_code
    if (character == "|" && !in_code)
      cell[++count] = ""
    else
      cell[count] = cell[count] character
  }
  for (i = 1; i <= count; ++i)
    gsub(/^ +| +$/, "", cell[i])
  return count
}

BEGIN {
  print ".\\\" Made from " source "; tools/man-pages renews it."
  print ".TH \"" title "\" " section " 2026-11-22 ulotaskengine"
  print ".SH \"NAME\""
  print plain(name) " \\- " plain(purpose)
}

/^```/ {
  end_paragraph()
  if (in_code_block) {
    print ".EE\n.RE"
  } else {
    begin_paragraph()
    print ".RS 4\n.EX"
  }
  in_code_block = !in_code_block
  next
}
in_code_block { print_line(plain($0)); next }

/^# / { print ".SH \"DESCRIPTION\""; after_title = 1; next }
/^##/ {
  end_paragraph()
  heading = $0
  sub(/^#+ */, "", heading)
  print ".SH \"" plain(toupper(heading)) "\""
  after_title = 1
  next
}

# The row above the line of dashes names the columns.
/^\|[-| ]+\|$/ { next }
/^\|/ {
  end_paragraph()
  if (!in_table) {
    in_table = 1
    next
  }
  count = split_row($0)
  tag = ""
  for (i = 1; i < count; ++i)
    if (cell[i] != "")
      tag = tag (tag == "" ? "" : " ") markup(cell[i])
  print ".TP"
  print_line(tag)
  fill(markup(cell[count]))
  after_title = 0
  next
}
{ in_table = 0 }

/^$/ { end_paragraph(); next }
{ paragraph = paragraph (paragraph == "" ? "" : " ") $0 }
END { end_paragraph() }
