# Completion of dravenna-lxf for bash. Verbs and options come from the program's own --help.
_dravenna_lxf() {
  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD - 1]} verb=() word
  for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    case $word in
      export | import | texts | stats | check | update | merge) [[ ${#verb[@]} = 0 || ${verb[*]} = po ]] && verb+=("$word") ;;
      setup | solve) [[ ${verb[*]} = git ]] && verb+=("$word") ;;
      po | git) [[ ${#verb[@]} = 0 ]] && verb+=("$word") ;;
    esac
  done
  case $prev in
    --color) COMPREPLY=($(compgen -W 'auto always never' -- "$cur")); return ;;
    --eol) COMPREPLY=($(compgen -W 'crlf keep' -- "$cur")); return ;;
    --format) COMPREPLY=($(compgen -W 'text json sarif github' -- "$cur")); return ;;
    --fail-on) COMPREPLY=($(compgen -W 'error warning note' -- "$cur")); return ;;
    --on-conflict) COMPREPLY=($(compgen -W 'smart ours theirs markers' -- "$cur")); return ;;
    --for) COMPREPLY=($(compgen -W hercules -- "$cur")); return ;;
    --commands) COMPREPLY=($(compgen -W 'default extended' -- "$cur")); return ;;
    --codepage | --their-codepage)
      COMPREPLY=($(compgen -W '1250 1251 1252 1253 1254 1255 1256 1257 1258 874 932 936 949 950 utf-8' -- "$cur")); return ;;
    --only | --ignore)
      COMPREPLY=($(compgen -W "$("${COMP_WORDS[0]}" check --help 2>/dev/null |
        awk 'kinds && /^  / { print $1 } /^Kinds:/ { kinds = 1 }')" -- "$cur")); return ;;
  esac
  if [[ $cur = -* ]]; then
    COMPREPLY=($(compgen -W "$("${COMP_WORDS[0]}" "${verb[@]}" --help 2>/dev/null |
      grep -oE '^ +(-[a-z],)?--[a-z-]+' | grep -oE -- '--[a-z-]+')" -- "$cur"))
  elif [[ ${#verb[@]} = 0 ]]; then
    COMPREPLY=($(compgen -W 'export import texts stats check update merge git po' -- "$cur"))
  elif [[ ${verb[*]} = git ]]; then
    COMPREPLY=($(compgen -W 'setup solve' -- "$cur"))
  elif [[ ${verb[*]} = po ]]; then
    COMPREPLY=($(compgen -W 'export import' -- "$cur"))
  else
    compopt -o filenames 2>/dev/null
    COMPREPLY=($(compgen -f -- "$cur"))
  fi
}
complete -F _dravenna_lxf dravenna-lxf
