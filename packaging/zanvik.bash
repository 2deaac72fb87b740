# Completion for bash: zanvik's verbs with their options, and the classic options.
# shellcheck shell=bash

# The words that begin with what is typed, or files, or folders.
_zanvik_words() { mapfile -t COMPREPLY < <(compgen -W "$1" -- "$word"); }
_zanvik_files() {
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <(compgen -f -- "$word")
}

_zanvik_folders() {
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <(compgen -d -- "$word")
}

# Behind a verb: `word` is what is typed, `before` the word in front of it.
_zanvik_verb() {
  local take='-i --event-id -c --channel -p --provider --computer -u --user --from --to
    -w --where --contains -l --level'
  case $1:$before in
    export:-f | export:--format)
      _zanvik_words 'jsonl xml csv timesketch elastic l2t bodyfile sqlite'
      return ;;
    hunt:-f | hunt:--format)
      _zanvik_words 'jsonl csv timesketch'
      return ;;
    check:-f | check:--format)
      _zanvik_words 'table json csv'
      return ;;
    hunt:--min-level | report:--min-level)
      _zanvik_words 'informational low medium high critical'
      return ;;
    hunt:--status)
      _zanvik_words 'stable test experimental deprecated unsupported'
      return ;;
    *:--order)
      _zanvik_words 'log time'
      return ;;
    *:--temp-dir)
      _zanvik_folders
      return ;;
    *:-l | *:--level)
      _zanvik_words 'critical error warning information verbose'
      return ;;
    *:-o | *:--output | *:--from-list | hunt:-r | hunt:--rules | hunt:--log-sources | \
      report:-r | report:--rules)
      _zanvik_files
      return ;;
    # Values that only the examiner knows.
    shard:-n | shard:--count | shard:--only)
      return ;;
    *:--memory | *:--threads | hunt:--placeholder | hunt:--exclude-rule | hunt:--tag)
      return ;;
    *)
      [[ " $take " == *[[:space:]]"$before"[[:space:]]* ]] && return ;;
  esac
  if [[ $word != -* ]]; then
    _zanvik_files
    return
  fi
  case $1 in
    export)
      _zanvik_words "-h --help -f --format -o --output --raw-cells --order --memory --temp-dir
        --event-time --full-text --unique --list --threads -q --quiet --slack --carve --from-list
        $take" ;;
    hunt)
      _zanvik_words "-h --help -r --rules --log-sources --placeholder --min-level --status
        --exclude-rule --tag -f --format --order --memory --temp-dir -o --output --raw-cells
        --details --list --stats --unique --threads -q --quiet --slack --carve --from-list $take" ;;
    check)
      _zanvik_words '-h --help -f --format -o --output -q --quiet --chunks --carve --list --threads
        --from-list' ;;
    report)
      _zanvik_words "-h --help -o --output -r --rules --min-level -q --quiet --slack --carve
        --from-list $take" ;;
    shard)
      _zanvik_words '-h --help -n --count -o --output --only --null --from-list' ;;
    merge)
      _zanvik_words '-h --help -o --output --from-list' ;;
  esac
}

_zanvik() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  COMPREPLY=()
  case ${COMP_WORDS[1]} in
    export | hunt | check | report | shard | merge)
      if ((COMP_CWORD > 1)); then
        # Bash takes --format=csv for three words.
        if [[ $word == = ]]; then
          word=
        elif [[ $before == = ]]; then
          before=${COMP_WORDS[COMP_CWORD - 2]}
        fi
        _zanvik_verb "${COMP_WORDS[1]}"
        return
      fi ;;
  esac
  if ((COMP_CWORD == 1)) && [[ $word != -* ]]; then
    _zanvik_words 'export hunt check report shard merge'
    return
  fi
  # Names of options count in any case, so the one in front does too.
  case ${before,,} in
    -log | -out | -outfile | -cmdfile | -stats | -diags)
      _zanvik_files
      return ;;
    -enumdir | -outdir)
      _zanvik_folders
      return ;;
    -dateformat)
      _zanvik_words 'yyyy-mm-dd mm/dd/yyyy dd/mm/yyyy dd-mm-yyyy'
      return ;;
    -timeformat)
      _zanvik_words 'hh:mm:ss hh:mm:ss.xxx hh:mm:ss.xxxxxx hh:mm:ss.xxxxxxx hh:mm:ss.xxxxxxxxx'
      return ;;
    -csv_separator)
      _zanvik_words 'tab ,'
      return ;;
    -threads)
      _zanvik_words '1 2 3 4 6 8 12 16'
      return ;;
    -num_subdirs)
      _zanvik_words '0 1 2 3 4 5 6 7 8 9'
      return ;;
    # Values that only the examiner knows.
    -alias | -aliaspath | -cmd_start_time | -cmd_stop_time | -cpu | -cpuinst | -createlog | \
      -eventid | -filter | -filter_path | -filter_sig | -filter_skip | -fragment_files | -hist | \
      -hostname | -rec_id | -rec_start | -rec_stop | -signal | -sqlite | -sqlite_log | \
      -start_time | -stop_time | -string | -username)
      return ;;
  esac
  _zanvik_words '
    -h -help --help --version
    -log -pipe -enumdir -num_subdirs -filter -filter_sig
    -cmd_start_time -cmd_stop_time
    -eventid -string -start_time -stop_time -event_time -inc_slack
    -pw -time -logon -startstop -creds -partition_metadata -usb -cmdfile
    -csv -csvl2t -bodyfile
    -allparams -one_timeline -csv_separator -no_whitespace -enable_quoted_csv_fields -pair_datetime
    -dateformat -timeformat -base10 -base16 -full_sids -show_offsets -alias -aliaspath -username
    -out -outfile -stats -hist -quiet -strict -threads -profile -diags -l2 -l3
  '
}

complete -F _zanvik zanvik
