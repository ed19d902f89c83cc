# SPDX-License-Identifier: MIT
# bash completion for corvane-wifi

_corvane_wifi_names() { # all|saved
    local names
    # Quotes inside a name are escaped in JSON, so neither pattern matches there. A name has no
    # control characters, since wpa_supplicant escapes them.
    names=$(corvane-wifi list --cached --json 2>/dev/null |
        LC_ALL=C grep -oE '"saved":(true|false)|"ssid":"([^"\\]|\\.)*"')
    [ "$1" = all ] || names=$(sed -n '/^"saved":true/{n;p;}' <<<"$names")
    sed -n '/^"ssid":"/{s///;s/"$//;s/\\\(.\)/\1/g;p;}' <<<"$names"
}

_corvane_wifi() {
    # bash splits words at colons and the like too, and leaves quotes in them: read the line anew.
    local line=${COMP_LINE:0:COMP_POINT} words=() word='' quote='' c i
    for ((i = 0; i < ${#line}; ++i)); do
        c=${line:i:1}
        case $quote$c in
        "''" | '""') quote= ;;
        \\) word+=${line:$((++i)):1} ;;
        \"\\) # between double quotes it escapes only these
            [[ ${line:i+1:1} != [\"\\\$\`] ]] || i=$((i + 1))
            word+=${line:i:1}
            ;;
        \' | \") quote=$c ;;
        ' ') words+=("$word") word='' ;;
        *) word+=$c ;;
        esac
    done

    local action='' operands=0 flags='' names=() given
    for given in "${words[@]:1}"; do
        case $given in
        '' | --*) ;;
        *) if [ "$action" ]; then ((++operands)); else action=$given; fi ;;
        esac
    done
    case $action in
    '')
        names=(status list pick connect disconnect forget help)
        flags='--help'
        ;;
    status | disconnect) flags='--json' ;;
    list) flags='--json --cached' ;;
    connect) flags='--open --password-stdin --json' ;;
    forget) flags='--yes --json' ;;
    esac
    case $action:$operands in
    connect:0) mapfile -t names < <(_corvane_wifi_names all) ;;
    forget:0) mapfile -t names < <(_corvane_wifi_names saved) ;;
    esac
    case $word:${#names[@]} in
    -* | :0) for given in $flags; do
        case " ${words[*]} " in
        *" $given "*) ;;
        *) names+=("$given") ;;
        esac
    done ;;
    esac

    COMPREPLY=()
    local name rest
    for name in "${names[@]}"; do
        [[ $name = "$word"* ]] || continue
        # What was typed stays as it was typed: only the rest is added, quoted to fit.
        rest=${name:${#word}}
        case $quote in
        \') rest=${rest//\'/\'\\\'\'} ;;
        \")
            # No backslash keeps the history from a ! there, only its end does.
            # shellcheck disable=SC2001 # bash before 5.2 has no & in a replacement
            rest=$(sed "s/[\"\\\\\$\`]/\\\\&/g; s/\(!!*\)\([^!]\)/\"'\1'\"\2/g" <<<"$rest")
            ;;
        *) [ -z "$rest" ] || printf -v rest %q "$rest" ;;
        esac
        COMPREPLY+=("$2$rest")
    done
}
complete -F _corvane_wifi corvane-wifi
