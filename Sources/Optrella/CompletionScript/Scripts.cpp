#include "Optrella/CompletionScript/Scripts.hpp"

namespace Optrella::Internal {

namespace {

constexpr std::string_view bash =
    R"script(# Completes @NAME@ in bash 4.4 or later by asking it.

# Reads the line: COMP_WORDS is cut at "=" and ":". Expands nothing.
@FUNCTION@_read() {
  local line=${COMP_LINE:0:COMP_POINT} char text opened depth=0 isWord= isFile=
  while :; do
    case $quote in
      \') text=${line%%\'*} ;;
      \") text=${line%%[\\\"]*} ;;
      \$*) text=${line%%[\\\']*} ;;
      *)
        text=${line%%[$'\\\'"$()<> \t\n']*} char=${text##*["$COMP_WORDBREAKS"]}
        if [[ $char != "$text" ]]; then
          kept=$word${text%"$char"} raw=${line:${#text}-${#char}}
          [[ $kept != *@ ]] || kept=${kept%@} raw=@$raw
        fi ;;
    esac
    word+=$text isWord+=$text line=${line:${#text}}
    [[ $line ]] || break
    char=${line:0:1} line=${line:1} text=${line:0:1}
    case $quote$char in
      [\'\"]) quote=$char isWord=1 opened=$word start=$line ;;
      \$)
        case $text in
          \') quote=\$\' line=${line:1} isWord=1 opened=$word start=$line ;;
          \") ;;
          *) word+=\$ isWord=1 ;;
        esac ;;
      \'\' | \"\" | \$\'\') quote= ;;
      \$\'\\)
        text=${line:1} text=\\${line:0:1}${text%%[!0-9a-fA-F]*}
        word+=${text@E} line=${line:${#text}-1} ;;
      *\\)
        [[ $quote != \" || $text == [$'$`"\\\n'] ]] || word+=\\
        word+=${text#$'\n'} isWord=1 line=${line:1} ;;
      \() [[ $depth == 0 && $word != *[\$\<\>] ]] || depth=$((depth + 1)); word+=$char ;;
      \)) depth=$((depth ? depth - 1 : 0)) word+=$char ;;
      *)
        if [[ $depth != 0 || $char$text == [\<\>]\( ]]; then
          word+=$char isWord=1
          continue
        fi
        [[ $char != [\<\>] || $word == *[!0-9\&]* ]] || isWord=
        if [[ $isWord ]]; then
          [[ $isFile ]] || words+=("$word")
          isFile=
        fi
        [[ $char != [\<\>] ]] || isFile=1
        word= kept= isWord= raw=$line ;;
    esac
  done
  [[ ! $quote ]] || kept=$opened raw=$start
  [[ ! $isFile ]]
}

@FUNCTION@() {
  local word= kept= raw= start quote= line text whole paths= before= words=() offers=()
  COMPREPLY=()
  @FUNCTION@_read || { compopt -o bashdefault -o default; return; }
  line=${words[0]}
  [[ $line =~ ^(~[[:alnum:]_.-]*)(/.*)$ ]] && eval "line=${BASH_REMATCH[1]}" && line+=${BASH_REMATCH[2]}
  [[ $line =~ ^\$([[:alpha:]_][[:alnum:]_]*)(/.*)$ ]] && line=${!BASH_REMATCH[1]}${BASH_REMATCH[2]}
  type -P -- "$line" || line='@NAME@'
  type -P -- "$line" || return
  while IFS= read -r line; do
    text=${line#*$'\t'} text=${text%%$'\t'*}
    case ${line%%$'\t'*} in
      file | path) paths=f before=$text ;;
      directory) paths=${paths:-d} before=$text ;;
      tag | choice | value)
        [[ $text != "$kept"* || ! $text && $word ]] || offers+=("${text:${#kept}}") ;;
    esac
  done <<<"$(OPTRELLA_COMPLETE=1 command "$line" "${words[@]:1}" "$word" </dev/null)"
  if [[ ! ${offers[*]} && $kept == "$before"* ]]; then
    case $paths in
      f) compopt -o bashdefault -o default ;;
      d) compopt -o filenames -o dirnames ;;
    esac
    return
  fi
  compopt -o nosort
  if [[ $paths ]]; then
    compopt -o filenames
    while IFS= read -r line; do
      [[ ! $line ]] || line=$before$line offers+=("${line:${#kept}}")
    done <<<"$(compgen -$paths -- "${word#"$before"}")"
    COMPREPLY=("${offers[@]}")
    return
  fi
  whole=$offers
  for text in "${offers[@]}"; do
    while [[ $text != "$whole"* ]]; do whole=${whole%?}; done
  done
  # What all begin with is inserted, quoted as it was begun; the rest is listed.
  for line in "${offers[@]}"; do
    [[ $COMP_TYPE != [34][27] ]] || whole=$line
    text=$whole
    case $quote in
      \') text=${text//\'/\'\\\'\'} ;;
      \")
        for start in \\ \" \$ \`; do text=${text//"$start"/\\"$start"}; done
        text=${text//!/\"\\!\"} ;;
      \$*) text=${text//\\/\\\\} text=${text//\'/\\\'} ;;
      *) printf -v text %q "$text" ;;
    esac
    [[ $whole != "${word:${#kept}}" ]] || text=$raw
    COMPREPLY+=("$text${line:${#whole}}")
  done
} &>/dev/null
! type compopt &>/dev/null || complete -F @FUNCTION@ -- '@NAME@'
)script";

constexpr std::string_view zsh = R"script(#compdef @NAME@
# Completes @NAME@ in zsh 5 by asking it.
@FUNCTION@() {
  local program=${(Q)words[1]} quote=$compstate[quote] line kind word paths before due width=0 result=1
  local -a typed lines offers helps shown expl
  [[ $program == (#b)\$([[:alpha:]_][[:alnum:]_]#)(/*) ]] && program=${(P)match[1]}$match[2]
  { program=${~program} } 2>/dev/null
  whence -p -- $program >/dev/null || program='@NAME@'
  whence -p -- $program >/dev/null || return 1
  (( CURRENT > 2 )) && typed=("${(@Q)words[2,CURRENT-1]}")
  typed+=("${(Q)${:-$quote$PREFIX${quote#\$}}}")
  lines=("${(@f)$(OPTRELLA_COMPLETE=1 command $program "${(@)typed}" 2>/dev/null </dev/null)}")
  for line in $lines; do
    kind=${line%%$'\t'*} line=${line#*$'\t'}
    word=${line%%$'\t'*} line=${line#*$'\t'}
    case $kind in
      (file|path) paths=file before=$word ;;
      (directory) paths=${paths:-directory} before=$word ;;
      (tag|choice|value)
        # In quotes zsh cannot insert what is not UTF-8.
        if [[ -n $word && -n $quote && ${(V)word} != "$word" ]]; then
          continue
        elif [[ -n $word ]]; then
          offers+=("$word") helps+=("$line")
          (( ${(m)#word} > width )) && width=${(m)#word}
        else
          _message -r "${line//\%/%%}"
          due=1
        fi ;;
    esac
  done
  if (( $#offers )); then
    for word line in "${(@)offers:^helps}"; do
      [[ -z $line ]] || word="${(mr:width:)word}  -- $line"
      (( ${(m)#word} < COLUMNS )) || word=${(mr:COLUMNS-1:)word}
      shown+=("$word")
    done
    _description -V words expl word
    [[ -z ${(j::)helps} ]] || expl+=(-l)
    compadd "${(@)expl}" -d shown -a offers && result=0
    # A word that is written in another way, as Unicode allows, does not begin with the same bytes.
    (( result )) && [[ -z $SUFFIX ]] && compadd -U "${(@)expl}" -d shown -a offers && result=0
    [[ -n $due && -z $typed[-1] ]] && compstate[insert]=${compstate[insert]:#*unambiguous}
  fi
  if [[ -n $paths ]]; then
    [[ -z $before ]] || compset -P "${(b)before}"
    if [[ $paths == file ]]; then _files && result=0; else _files -/ && result=0; fi
  fi
  return result
}
case $zsh_eval_context[-1] in
  (shfunc|loadautofunc) @FUNCTION@ "$@" ;;
  (*) compdef @FUNCTION@ '@NAME@' ;;
esac
)script";

constexpr std::string_view fish =
    R"script(# Completes @NAME@ in fish 3 or later by asking it.
function @FUNCTION@
    set -l raw (commandline -ct | string collect)
    set -l tokens
    set -l words
    set -l file
    set -l due
    set -l offers
    printf %s (commandline -pc | string collect) | read -zlat tokens
    test -n "$raw"; or set -a tokens ''
    for each in $tokens[1..-2]
        if set -q file[1]
            set -e file
        else if string match -qr '^[0-9&]*[<>][<>|&?]*$' -- $each
            set file 1
        else
            set -a words $each
        end
    end
    set -l path (string match -r '^(~[\\w.-]*)(/.*)$' -- $words[1])
    and eval "set path[2] $path[2]"
    and set words[1] $path[2]$path[3]
    set path (string match -r '^\$(\\w+)(/.*)$' -- $words[1])
    and set words[1] (set -l variable $path[2]; printf %s $$variable)$path[3]
    command -sq -- $words[1]; or set words[1] '@NAME@'
    command -sq -- $words[1]; or return
    for line in (OPTRELLA_COMPLETE=1 command $words $tokens[-1] 2>/dev/null </dev/null)
        set -l fields (string split -m 2 \t -- $line)
        set path (string replace -- "$fields[2]" '' "$raw")
        switch $fields[1]
            case tag choice value
                if test -n "$fields[2]"
                    set -a offers $fields[2]\t$fields[3]
                else if test -z "$raw"
                    set -a due \t$fields[3]
                end
            case file path
                set -a offers $fields[2](complete -C "'' $path")
            case directory
                set -a offers $fields[2](complete -C "'' $path" | string match -r '^.*/(?=$|\t)')
        end
    end
    # An offer of nothing keeps fish from inserting the only word, where another may be meant.
    set -q offers[1]; and printf '%s\n' $due $offers
end
complete -c '@NAME@' -fka '(@FUNCTION@)'
)script";

}  // namespace

std::string_view scriptOf(Shell shell) noexcept {
    switch (shell) {
        case Shell::bash:
            return bash;
        case Shell::zsh:
            return zsh;
        case Shell::fish:
            break;
    }
    return fish;
}

}  // namespace Optrella::Internal
