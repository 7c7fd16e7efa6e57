# SPDX-License-Identifier: GPL-3.0-or-later
_ostrelle_captions() {
  local current=${COMP_WORDS[COMP_CWORD]}
  if [[ $current == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "--hidden --caption-images --switch-auto-mode --help --version" -- "$current")
  else
    mapfile -t COMPREPLY < <(compgen -f -- "$current")
  fi
}
complete -o filenames -F _ostrelle_captions ostrelle-captions
