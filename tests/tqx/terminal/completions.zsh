# What zsh offers behind words typed, one a line: completions.zsh FOLDER_OF_COMPLETIONS FOLDER_OF_TQX CACHE WORDS
#
# An interactive shell on a terminal of its own is sent the words and a tab; in place of showing what
# fits, its compadd prints it between marks. CACHE is a file where shells keep what completions there are.
zmodload zsh/zpty || exit 77
zpty shell zsh -f -i

zpty -w shell "PS1= PS2= RPS1=; stty -echo; path=(${(q)2} \$path); fpath=(${(q)1} \$fpath)"
zpty -w shell "autoload -U compinit && compinit -u -d ${(q)3}"
zpty -w shell '
compadd() {
  if [[ ${@[1,(i)(-|--)]} == *-(O|A|D)\ * ]]; then builtin compadd "$@"; return; fi
  local -a fitting; builtin compadd -A fitting "$@"
  (( ! $#fitting )) || print -lr -- "<"${^fitting}">"
}
tell() { _main_complete; print "<<end>>"; compstate[insert]=; compstate[list]= }
zle -C tell complete-word tell
bindkey "^I" tell
print "<<ready>>"'
while zpty -r shell line && [[ $line != *'<<ready>>'* || $line == *print* ]]; do :; done
zpty -w -n shell "$4"$'\t'
while zpty -r shell line && [[ $line != *'<<end>>'* ]]; do
  line=${line//$'\r'/}
  [[ $line != *'<'*'>'* ]] || print -r -- ${${line#*<}%%>*}
done
zpty -d shell
