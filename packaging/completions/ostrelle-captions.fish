# SPDX-License-Identifier: GPL-3.0-or-later
complete -c ostrelle-captions -l hidden -d 'Show no window where there is a tray'
complete -c ostrelle-captions -l caption-images -d 'Choose images to caption'
complete -c ostrelle-captions -l switch-auto-mode -d 'Turn auto mode on or off'
complete -c ostrelle-captions -s h -l help -d 'Show the help text'
complete -c ostrelle-captions -l version -d 'Show the version'
