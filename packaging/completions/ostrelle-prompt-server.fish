# SPDX-License-Identifier: GPL-3.0-or-later
complete -c ostrelle-prompt-server -f
complete -c ostrelle-prompt-server -l listen -x -d 'The address to listen on'
complete -c ostrelle-prompt-server -l port -x -d 'The port'
complete -c ostrelle-prompt-server -l templates -r -F -d 'A folder of texts in place of the built-in ones'
complete -c ostrelle-prompt-server -l key-file -r -F -d 'A file with the key that clients have to show'
complete -c ostrelle-prompt-server -s h -l help -d 'Show the help text'
complete -c ostrelle-prompt-server -l version -d 'Show the version'
