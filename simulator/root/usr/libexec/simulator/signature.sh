# Who signed an item is stored as one line of text, the name of the leaf certificate:
# in "Contents/_CodeSignature/authority" of a bundle, in "FILE.signature" beside a file.

# signatureOf ITEM: the name of the leaf certificate; nothing for an unsigned item.
signatureOf() {
  local stored
  if [[ -d $1 ]]; then stored=$1/Contents/_CodeSignature/authority; else stored=$1.signature; fi
  if [[ -f $stored ]]; then head -n 1 "$stored"; fi
}
