# Sourced by the scripts beside it.

# buildProgram NAME: path of a program of this checkout's build; VORLU_BUILD names another build folder.
buildProgram() {
  local root folder
  root=$(dirname "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")")
  for folder in ${VORLU_BUILD:+"$VORLU_BUILD"} "$root/build/dev" "$root/build/release"; do
    if [[ -x $folder/$1 ]]; then
      readlink -f "$folder/$1"
      return
    fi
  done
  die "$1 isn't built: looked in \$VORLU_BUILD, build/dev and build/release"
}
