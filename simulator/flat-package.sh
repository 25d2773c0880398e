# Sourced by make-installer: makes flat packages, as /usr/libexec/simulator/flat-package.sh describes them. It uses that
# script's options and `pack`.

# bundleText BUNDLE KEY: a text of its Info.plist.
bundleText() {
  "$(buildProgram sim-tools)" plist-text "$1/Contents/Info.plist" "$2"
}

# identifierOf ITEM, versionOf ITEM: what the option says, or else the bundle.
identifierOf() {
  if [[ -n $identifier ]]; then printf '%s\n' "$identifier"; else bundleText "$1" CFBundleIdentifier; fi
}
versionOf() {
  if [[ -n $version ]]; then printf '%s\n' "$version"; else bundleText "$1" CFBundleShortVersionString; fi
}

# writeComponent FOLDER IDENTIFIER VERSION: the items as one component. Its scripts come with the first one alone.
writeComponent() {
  local folder=$1 scripts='' script file
  mkdir -p "$folder"
  if ((${#items[@]})); then
    pack "$folder/Payload" --format cpio --gzip
    bsdtar -tf "$folder/Payload" >"$folder/Bom"
  fi
  for script in preinstall postinstall; do
    file=${!script}
    [[ -n $file ]] || continue
    mkdir -p "$scratch/scripts"
    install -m 755 "$file" "$scratch/scripts/$script"
    scripts+="<$script file=\"./$script\"/>"
  done
  if [[ -n $scripts ]]; then
    bsdtar -cf "$folder/Scripts" --format cpio --gzip --uid 0 --gid 0 -C "$scratch/scripts" .
    preinstall='' postinstall=''
  fi
  cat >"$folder/PackageInfo" <<TEXT
<?xml version="1.0" encoding="utf-8"?>
<pkg-info format-version="2" identifier="$(xmlText "$2")" version="$(xmlText "$3")" auth="root"
          install-location="$(xmlText "$location")">
  <payload numberOfFiles="$(grep -c '' "$folder/Bom" 2>/dev/null)"/>
  <scripts>$scripts</scripts>
</pkg-info>
TEXT
}

# addComponent CHOICE ITEM…: a component of these items, and the choice that brings it.
addComponent() {
  local choice=$1 id number selected=true
  local -a items=("${@:2}")
  id=$(identifierOf "${items[0]:-}") || true
  [[ -z $separate || -z $identifier ]] || id+=.$choice
  [[ -n $id ]] || die "a package of other items than bundles needs --id"
  number=$(versionOf "${items[0]:-}") || true
  [[ -n $number ]] || die "a package of other items than bundles needs --version"
  [[ $'\n'$unselected != *$'\n'"$choice"$'\n'* ]] || selected=false
  ((++components))
  writeComponent "$package/component-$components.pkg" "$id" "$number"
  choices+="
  <choice id=\"$(xmlText "$choice")\" title=\"$(xmlText "$choice")\" start_selected=\"$selected\">
    <pkg-ref id=\"$(xmlText "$id")\"/>
  </choice>
  <pkg-ref id=\"$(xmlText "$id")\" version=\"$(xmlText "$number")\">#component-$components.pkg</pkg-ref>"
}

makePackage() { # OUT
  local package=$scratch/package choices='' components=0 item base
  local -a members=(Distribution)
  mkdir "$package"
  if [[ -z $separate ]]; then
    addComponent "$name" "${items[@]}"
  else
    for item in "${items[@]}"; do
      base=${item##*/}
      addComponent "${base%.*}" "$item"
    done
  fi
  cat >"$package/Distribution" <<TEXT
<?xml version="1.0" encoding="utf-8"?>
<installer-gui-script minSpecVersion="2">
  <title>$(xmlText "$name")</title>
  <options customize="allow"/>$choices
</installer-gui-script>
TEXT
  if [[ -n $authority ]]; then
    printf '%s\n' "$authority" >"$package/signature"
    members=(signature Distribution)
  fi
  for item in "$package"/component-*.pkg; do members+=("${item##*/}"); done
  bsdtar -cf "$1" --format xar --options xar:compression=none --uid 0 --gid 0 -C "$package" "${members[@]}"
  rm -r "$package"
}
