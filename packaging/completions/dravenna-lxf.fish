# Completion of dravenna-lxf for fish. Options come from the program's own --help.
set -l verbs export import texts stats check update merge git po

function __dravenna_lxf_options
    set -l verb
    for word in (commandline -opc)[2..-1]
        switch $word
            case export import texts stats check update merge
                if test (count $verb) -eq 0; or test "$verb" = po
                    set -a verb $word
                end
            case setup solve
                test "$verb" = git; and set -a verb $word
            case po git
                test (count $verb) -eq 0; and set -a verb $word
        end
    end
    dravenna-lxf $verb --help 2>/dev/null | string match -r -- '^ +(?:-[a-z],)?--[a-z-]+' | string match -r -- '--[a-z-]+'
end

function __dravenna_lxf_kinds
    dravenna-lxf check --help 2>/dev/null | awk 'kinds && /^  / { print $1 } /^Kinds:/ { kinds = 1 }'
end

complete -c dravenna-lxf -n "not __fish_seen_subcommand_from $verbs" -f -a "$verbs"
complete -c dravenna-lxf -n "__fish_seen_subcommand_from po; and not __fish_seen_subcommand_from export import" -f -a "export import"
complete -c dravenna-lxf -n "__fish_seen_subcommand_from git; and not __fish_seen_subcommand_from setup solve" -f -a "setup solve"
complete -c dravenna-lxf -l on-conflict -x -a "smart ours theirs markers"
complete -c dravenna-lxf -n "string match -q -- '-*' (commandline -ct)" -f -a "(__dravenna_lxf_options)"
complete -c dravenna-lxf -l color -x -a "auto always never"
complete -c dravenna-lxf -n "__fish_seen_subcommand_from import" -l eol -x -a "crlf keep"
complete -c dravenna-lxf -n "__fish_seen_subcommand_from po" -l for -x -a hercules
complete -c dravenna-lxf -n "__fish_seen_subcommand_from check" -l only -x -a "(__dravenna_lxf_kinds)"
complete -c dravenna-lxf -n "__fish_seen_subcommand_from check" -l ignore -x -a "(__dravenna_lxf_kinds)"
complete -c dravenna-lxf -n "__fish_seen_subcommand_from check" -l format -x -a "text json sarif github"
complete -c dravenna-lxf -n "__fish_seen_subcommand_from check" -l fail-on -x -a "error warning note"
complete -c dravenna-lxf -l commands -x -a "default extended"
complete -c dravenna-lxf -l their-codepage -l codepage -x -a "1250 1251 1252 1253 1254 1255 1256 1257 1258 874 932 936 949 950 utf-8"
