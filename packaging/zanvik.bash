# Completion of zanvik's options for bash.
# shellcheck shell=bash

_zanvik() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  COMPREPLY=()
  # Names of options count in any case, so the one in front does too.
  case ${before,,} in
    -log | -out | -outfile | -cmdfile | -stats | -diags)
      compopt -o filenames 2>/dev/null
      mapfile -t COMPREPLY < <(compgen -f -- "$word")
      return ;;
    -enumdir | -outdir)
      compopt -o filenames 2>/dev/null
      mapfile -t COMPREPLY < <(compgen -d -- "$word")
      return ;;
    -dateformat)
      mapfile -t COMPREPLY < <(compgen -W 'yyyy-mm-dd mm/dd/yyyy dd/mm/yyyy dd-mm-yyyy' -- "$word")
      return ;;
    -timeformat)
      mapfile -t COMPREPLY < <(compgen -W 'hh:mm:ss hh:mm:ss.xxx hh:mm:ss.xxxxxx
        hh:mm:ss.xxxxxxx hh:mm:ss.xxxxxxxxx' -- "$word")
      return ;;
    -csv_separator)
      mapfile -t COMPREPLY < <(compgen -W 'tab ,' -- "$word")
      return ;;
    -num_subdirs)
      mapfile -t COMPREPLY < <(compgen -W '0 1 2 3 4 5 6 7 8 9' -- "$word")
      return ;;
    # Values that only the examiner knows.
    -alias | -aliaspath | -cmd_start_time | -cmd_stop_time | -cpu | -cpuinst | -createlog | \
      -eventid | -filter | -filter_path | -filter_sig | -filter_skip | -fragment_files | -hist | \
      -hostname | -rec_id | -rec_start | -rec_stop | -signal | -sqlite | -sqlite_log | \
      -start_time | -stop_time | -string | -threads | -username)
      return ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W '
    -h -help --help --version
    -log -pipe -enumdir -num_subdirs -filter -filter_sig
    -cmd_start_time -cmd_stop_time
    -eventid -string -start_time -stop_time -event_time -inc_slack
    -pw -time -logon -startstop -creds -partition_metadata -usb -cmdfile
    -csv -csvl2t -bodyfile
    -allparams -csv_separator -no_whitespace -enable_quoted_csv_fields -pair_datetime
    -dateformat -timeformat -base10 -base16 -full_sids -show_offsets -alias -aliaspath -username
    -out -outfile -stats -hist -quiet -strict -profile -diags -l2 -l3
  ' -- "$word")
}

complete -F _zanvik zanvik
