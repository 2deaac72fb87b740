# Completion for bash: zanvik-fleet, and behind `--` the options of zanvik export.
# shellcheck shell=bash

_zanvik_fleet() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} i
  COMPREPLY=()
  for ((i = 1; i < COMP_CWORD; ++i)); do
    [[ ${COMP_WORDS[i]} == -- ]] || continue
    # The options behind are those of the verb, whose completion has its own file.
    declare -F _zanvik_verb >/dev/null || _completion_loader zanvik 2>/dev/null
    declare -F _zanvik_verb >/dev/null && _zanvik_verb export
    return
  done
  case $before in
    --work)
      compopt -o filenames 2>/dev/null
      mapfile -t COMPREPLY < <(compgen -d -- "$word")
      return ;;
    --zanvik)
      mapfile -t COMPREPLY < <(compgen -c -- "$word")
      return ;;
    -n | --shards | -j | --jobs | --sbatch | --retries)
      return ;;
    -o | --output | --sshloginfile | --from-list) ;;
    *)
      if [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W '-h --help -o --output -n --shards -j --jobs
          --sshloginfile --slurm --sbatch --retries --work --resume --keep --from-list
          --zanvik --' -- "$word")
        return
      fi ;;
  esac
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <(compgen -f -- "$word")
}

complete -F _zanvik_fleet zanvik-fleet
