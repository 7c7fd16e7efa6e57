# SPDX-License-Identifier: GPL-3.0-or-later
_ostrelle_caption() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  case $previous in
    --folder | --watch | --into) mapfile -t COMPREPLY < <(compgen -d -- "$current") ;;
    --style) mapfile -t COMPREPLY < <(compgen -W "ap getty imagn simple" -- "$current") ;;
    --sport)
      mapfile -t COMPREPLY < <(compgen -W "baseball basketball crossCountry football horseRacing lacrosse soccer \
        softball trackAndField volleyball" -- "$current")
      ;;
    --server | --certificate | --before | --day) ;;
    *)
      if [[ $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "--folder --only-new --watch --retry-failed --server --into \
          --download-all --password-stdin --tls --certificate --style --sport --roster --overwrite --keep --json \
          --show-prompt --verbose --help --version --clear --last-run --before \
          --day --html" -- "$current")
      else
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
        [[ $COMP_CWORD -ne 1 ]] || COMPREPLY+=($(compgen -W "check forget key report undo" -- "$current"))
      fi
      ;;
  esac
}
complete -o filenames -F _ostrelle_caption ostrelle-caption
