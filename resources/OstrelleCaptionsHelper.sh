#!/bin/sh
# SPDX-License-Identifier: GPL-3.0-or-later
# OstrelleCaptionsHelper.sh PROGRAM JOB: starts the program whenever the user starts Photo Mechanic, natively or under
# Wine. A second start brings the window to the front. Ends when JOB, the file that has it run at each login, is gone,
# and when the program is. Looks every two seconds at the processes that are new, and runs nothing but sleep.
program=${1:?Usage: OstrelleCaptionsHelper.sh PROGRAM JOB}
job=${2:?Usage: OstrelleCaptionsHelper.sh PROGRAM JOB}

exec 9> "${XDG_RUNTIME_DIR:-$HOME}/com.tobinvasquel.Ostrelle-Captions.Helper.lock"
flock --nonblock 9 || exit 0 # another helper of this user runs

# Sets last to the newest process's number.
read_last() {
  read -r _ _ _ _ last < /proc/loadavg
}

# Sets name to that of the process, if it is the user's own.
read_name() {
  name=
  [ -O "/proc/$1" ] || return
  read -r name < "/proc/$1/comm" || return
  case $name in
    wine*) # a process that has not told its own name yet
      read -r name < "/proc/$1/cmdline" || : # without the NULs between the words
      case $name in
        *.[eE][xX][eE]*) name=${name%%.[eE][xX][eE]*} ;;
        *) name= ;;
      esac
      ;;
  esac
} 2> /dev/null

# Whether the process is Photo Mechanic, and not one of its threads, whose numbers are among those of processes.
is_photo_mechanic() {
  read_name "$1"
  case $name in
    *"Photo Mechanic"* | *PhotoMechanic*) ;;
    *) return 1 ;;
  esac
  while read -r key value; do
    [ "$key" != Tgid: ] || break
  done < "/proc/$1/status"
  [ "$value" = "$1" ]
} 2> /dev/null

# Leaves in running what of it has not ended.
forget_ended() {
  left=
  for process in $running; do
    [ ! -d "/proc/$process" ] || left="$left $process"
  done
  running=$left
}

# In a unit of its own, with the session's present display, so that the end of this helper does not end the program.
start_program() {
  systemd-run --user --quiet --collect -- "$program" 9>&- 2> /dev/null || setsid --fork "$program" > /dev/null 2>&1 9>&-
}

check_program() {
  [ -e "$job" ] || exit 0
  if [ ! -x "$program" ]; then
    echo "$program is no longer there. Start Ostrelle Captions from its new place once." >&2
    exit 0 # not a failure: it would fail again
  fi
}

# Photo Mechanic may have been quicker at the login. A program that runs already needs no start.
look_at_all() {
  is_program_there=no
  for folder in /proc/[1-9]*; do
    ! is_photo_mechanic "${folder#/proc/}" || running="$running ${folder#/proc/}"
    [ "$name" != ostrelle-captio ] || is_program_there=yes
  done
  [ -z "$running" ] || [ $is_program_there = yes ] || start_program
}

# Processes from $1 to $2. Further ones of a Photo Mechanic that runs are no start.
look_at_new() {
  number=$1
  while [ "$number" -le "$2" ]; do
    if is_photo_mechanic "$number"; then
      case " $running " in
        *" $number "*) ;;
        *)
          [ -n "$running" ] || start_program
          running="$running $number"
          ;;
      esac
    fi
    number=$((number + 1))
  done
}

running= # Photo Mechanic's processes
check_program
read_last
look_at_all
window="$last $last $last $last $last $last" # the newest process at each of the last looks
while :; do
  sleep 2
  check_program
  read_last
  forget_ended
  oldest=${window%% *}
  if [ "$last" -ge "$oldest" ]; then
    look_at_new "$((oldest + 1))" "$last"
  else # the numbers have begun anew
    look_at_new "$((oldest + 1))" "$(cat /proc/sys/kernel/pid_max)"
    look_at_new 1 "$last"
  fi
  window="${window#* } $last"
done
