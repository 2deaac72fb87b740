# Prints what an interactive zsh lists for a line and the tabulator.
#   $1  the folder of the completion function     $2  the line
# Status 77 says that there are no terminals here.
zmodload zsh/zpty && zpty shell zsh -f -i 2>/dev/null || exit 77
# The words are cut so that their echo is not taken for their effect.
zpty -w shell "PROMPT=; unset zle_bracketed_paste; stty rows 400 cols 100; fpath=(${(q)1} \$fpath)
autoload -U compinit; compinit -D -u; LISTMAX=9999; unsetopt list_beep
bindkey '^I' complete-word; print REA''DY"
zpty -r -m shell output '*READY*' || exit 1
zpty -w -n shell "$2"$'\t'
# First the line as it was typed, then the list, then the line again; or a bell, when there is none.
zpty -r -m shell output "*${(b)2}*( -- *${(b)2}|"$'\a)*' || exit 1
zpty -d shell
# Options that share a line get one each.
print -r -- "$output" | tr -d '\r' | sed 's/ -- .*//; s/\x1b\[[0-9;?]*[a-zA-Z]//g' | tr -s ' ' '\n'
