# A flat package: a xar archive of a Distribution, which names choices and the components that they bring, and a folder
# for each component with PackageInfo, Payload and Scripts (cpio, gzip'd) and Bom. A package of one component may be
# just that component. The name of the certificate that signed it is the member "signature".

looksLikePackage() { # FILE
  [[ -f $1 && $(head -c 4 "$1" | tr -d '\0') == 'xar!' ]]
}

# isSoundPackage FILE: false for what isn't one, and for one whose members don't match their checksums.
isSoundPackage() {
  looksLikePackage "$1" && /.linux/bin/bsdtar -xOf "$1" &>/dev/null
}

# packageSignature FILE: nothing for an unsigned package.
packageSignature() {
  /.linux/bin/bsdtar -xOf "$1" signature 2>/dev/null | head -n 1
}

# xml FILE EXPRESSION: an XPath's value as text; nothing when the file can't be read.
xml() {
  /.linux/bin/xmllint --nonet --xpath "normalize-space($2)" "$1" 2>/dev/null
}

# readChoiceChanges FILE: fills `choiceChanges` with 1 or 0 for each choice that the file selects or not; false when it
# is no list of changes.
declare -A choiceChanges=()
readChoiceChanges() {
  local number changes dict choice setting
  changes=$(xml "$1" 'count(/plist/array/dict)')
  [[ $(xml "$1" 'count(/plist/array)') == 1 ]] || return 1
  for ((number = 1; number <= changes; ++number)); do
    dict="/plist/array/dict[$number]/key"
    [[ $(xml "$1" "${dict}[.='choiceAttribute']/following-sibling::*[1]") == selected ]] || continue
    choice=$(xml "$1" "${dict}[.='choiceIdentifier']/following-sibling::*[1]")
    setting="${dict}[.='attributeSetting']/following-sibling::*[1]"
    if [[ $(xml "$1" "boolean(${setting}[self::true or (self::integer and number(.) != 0)])") == true ]]; then
      choiceChanges[$choice]=1
    else
      choiceChanges[$choice]=0
    fi
  done
}

# selectedComponents FOLDER: folders of the components to install, one a line, of an unpacked package; nothing for what
# holds none.
selectedComponents() {
  local distribution=$1/Distribution choices choice selected references number reference folder
  if [[ -f $1/PackageInfo ]]; then
    printf '.\n'
    return
  fi
  choices=$(xml "$distribution" 'count(//choice)')
  for ((choice = 1; choice <= choices; ++choice)); do
    selected=1
    [[ $(xml "$distribution" "(//choice)[$choice]/@start_selected") != false ]] || selected=0
    selected=${choiceChanges[$(xml "$distribution" "(//choice)[$choice]/@id")]:-$selected}
    ((selected)) || continue
    references=$(xml "$distribution" "count((//choice)[$choice]/pkg-ref)")
    for ((number = 1; number <= references; ++number)); do
      reference="(//choice)[$choice]/pkg-ref[$number]"
      folder=$(xml "$distribution" "//pkg-ref[@id=$reference/@id][starts-with(normalize-space(.), '#')]")
      printf '%s\n' "${folder#\#}"
    done
  done
}
