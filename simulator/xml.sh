# Sourced by the scripts beside it.

# xmlText TEXT: the text as it stands in XML.
xmlText() {
  sed 's/&/\&amp;/g; s/</\&lt;/g; s/>/\&gt;/g; s/"/\&quot;/g' <<<"$1"
}
