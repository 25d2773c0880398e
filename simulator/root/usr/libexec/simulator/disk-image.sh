# A disk image: an ISO 9660 file system with Rock Ridge, and behind it, in images that come as .dmg, a property list and
# a trailer of 512 bytes. The trailer tells the file system's length and SHA-256 and where the property list lies, which
# holds the licence. A converted image is the file system alone.

readonly trailerSize=512 descriptorOffset=32768

hexAt() { # FILE OFFSET LENGTH
  od -An -v -tx1 -j "$2" -N "$3" "$1" 2>/dev/null | tr -d ' \n'
}

digestOfFirst() { # FILE LENGTH
  head -c "$2" "$1" | openssl dgst -sha256 -r | cut -c 1-64
}

# readTrailer FILE: sets `dataLength` (bytes), `dataDigest`, `listOffset` and `listLength`. A file without a trailer is
# all data, and has no digest.
readTrailer() {
  local size trailer=''
  size=$(stat -L -c %s "$1")
  dataLength=$size dataDigest='' listOffset=0 listLength=0
  ((size <= trailerSize)) || trailer=$(hexAt "$1" $((size - trailerSize)) $trailerSize)
  [[ $trailer == 6b6f6c79* ]] || return 0 # "koly"
  dataLength=$((16#${trailer:64:16})) dataDigest=${trailer:176:64}
  listOffset=$((16#${trailer:432:16})) listLength=$((16#${trailer:448:16}))
}

# isSoundImage FILE: after readTrailer: false for what is no image, is cut off, or doesn't match its SHA-256. Only a
# name in .cdr or .iso tells that a missing trailer isn't cut off.
isSoundImage() {
  local blocks
  [[ -n $dataDigest || $1 == *.cdr || $1 == *.iso ]] || return 1
  [[ $(hexAt "$1" $descriptorOffset 6) == 014344303031 ]] || return 1 # "CD001"
  blocks=$((16#0$(hexAt "$1" $((descriptorOffset + 84)) 4)))
  ((dataLength >= blocks * 2048)) || return 1
  [[ -z $dataDigest || $dataDigest == "$(digestOfFirst "$1" "$dataLength")" ]]
}

# As below /Volumes, where a slash is a colon.
volumeName() { # FILE
  dd if="$1" bs=1 skip=$((descriptorOffset + 40)) count=32 2>/dev/null | sed 's/ *$//' | tr / :
}

# licenceOf FILE: after readTrailer: the text of the licence; nothing without one.
licenceOf() {
  ((listLength)) || return 0
  tail -c +$((listOffset + 1)) "$1" | head -c "$listLength" |
    sed -n '/<key>LPic<\/key>/,$ s|.*<data>\(.*\)</data>.*|\1|p' | openssl base64 -d -A
}

# appendTrailer FILE LICENCE: makes an image of a file system; an empty licence is none.
appendTrailer() {
  local length digest list licence=''
  length=$(stat -c %s "$1")
  digest=$(digestOfFirst "$1" "$length")
  [[ -z $2 ]] || licence="<key>LPic</key><array><dict><key>Data</key>
<data>$(printf '%s' "$2" | openssl base64 -A)</data></dict></array>"
  list="<?xml version=\"1.0\" encoding=\"UTF-8\"?>
<plist version=\"1.0\"><dict><key>resource-fork</key><dict>$licence</dict></dict></plist>"
  printf '%s' "$list" >>"$1"
  local trailer
  trailer=$(printf '6b6f6c79%08x%08x%08x' 4 $trailerSize 1)                 # "koly", version, size, flags
  trailer+=$(printf '%032d%016x%032d' 0 "$length" 0)                        # where the data lies, no other fork
  trailer+=$(printf '%08x%08x%032d%08x%08x%s' 1 1 0 8 256 "$digest")        # one segment; checksum and its bits
  trailer+=$(printf '%0192d%016x%016x' 0 "$length" "$(printf %s "$list" | wc -c)") # the property list
  trailer+=$(printf '%0*d' $((trailerSize * 2 - ${#trailer})) 0)
  # shellcheck disable=SC2059 # the text is a format: each byte as an escape
  printf "$(sed 's/../\\x&/g' <<<"$trailer")" >>"$1"
}
