# The sections of CHANGELOG.md as the releases of an AppStream file. `today` dates one that has no date yet.
function flush() {
  if (item != "") print "        <li>" item "</li>"
  item = ""
}
function finish() {
  flush()
  if (open) print "      </ul></description>\n    </release>"
  open = 0
}
{
  gsub(/&/, "\\&amp;")
  gsub(/</, "\\&lt;")
  gsub(/`/, "")
}
/^## / {
  finish()
  date = match($0, /[0-9]+-[0-9]+-[0-9]+/) ? substr($0, RSTART, RLENGTH) : today
  print "    <release version=\"" $2 "\" date=\"" date "\">\n      <description><ul>"
  open = 1
}
/^- / && open { flush(); item = substr($0, 3) }
/^  / && open { item = item " " substr($0, 3) }
END { finish() }
