# SPDX-License-Identifier: GPL-3.0-or-later
_ostrelle_prompt_server() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  case $previous in
    --templates) mapfile -t COMPREPLY < <(compgen -d -- "$current") ;;
    --key-file) mapfile -t COMPREPLY < <(compgen -f -- "$current") ;;
    --listen | --port) ;;
    *)
      mapfile -t COMPREPLY < <(compgen -W "--listen --port --templates --key-file --help --version" -- "$current")
      ;;
  esac
}
complete -o filenames -F _ostrelle_prompt_server ostrelle-prompt-server
