# The catalogue with one more model, a QX-300 in front of all others of its family.
/^[^#].*\| QX-100 / && !done {
  row = $0
  gsub("QX-100", "QX-300", row)
  gsub("qx100", "qx300", row)
  print row
  done = 1
}
{ print }
END { if (!done) { print "one_more_model.awk: no QX-100" > "/dev/stderr"; exit 1 } }
