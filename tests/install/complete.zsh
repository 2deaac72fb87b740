# Prints what an interactive zsh lists for "zanvik -" and the tabulator.
#   $1  the folder of the completion function
zmodload zsh/zpty || exit 1
zpty shell zsh -f -i
# The words are cut so that their echo is not taken for their effect.
zpty -w shell "PROMPT=; unset zle_bracketed_paste; stty rows 400 cols 100; fpath=($1 \$fpath)
autoload -U compinit; compinit -D -u; LISTMAX=9999; bindkey '^I' complete-word; print REA''DY"
zpty -r -m shell output '*READY*' || exit 1
zpty -w -n shell $'zanvik -\t'
# First the line as it was typed, then the list, then the line again.
zpty -r -m shell output $'*zanvik -*username*zanvik -*' || exit 1
zpty -d shell
# Two options side by side have one blank at least between them; each gets a line of its own.
print -r -- "$output" | tr -d '\r' | sed 's/ -- .*//; s/\x1b\[[0-9;?]*[a-zA-Z]//g' | tr -s ' ' '\n'
