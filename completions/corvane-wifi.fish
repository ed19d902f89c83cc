# SPDX-License-Identifier: MIT
# fish completion for corvane-wifi

function __corvane_wifi_names # all|saved
    # Quotes inside a name are escaped in JSON, so neither pattern matches there. A name has no
    # control characters, since wpa_supplicant escapes them.
    set -l names (corvane-wifi list --cached --json 2>/dev/null |
        string match -ar '"saved":(?:true|false)|"ssid":"(?:[^"\\\\]|\\\\.)*"')
    for i in (seq 1 2 (count $names))
        if test $argv[1] = all -o "$names[$i]" = '"saved":true'
            string replace -r '^"ssid":"(.*)"$' '$1' $names[(math $i + 1)] |
                string replace -ar '\\\\(.)' '$1'
        end
    end
end

function __corvane_wifi_at # ACTION OPERANDS
    set -l words (string match -v -- '--*' (commandline -opc)[2..-1])
    test (count $words) -eq (math $argv[2] + 1); and test "$words[1]" = $argv[1]
end

function __corvane_wifi_action # ACTION...
    set -l words (string match -v -- '--*' (commandline -opc)[2..-1])
    contains -- "$words[1]" $argv
end

complete -c corvane-wifi -f
complete -c corvane-wifi -n '__corvane_wifi_action ""' -l help -d 'Print the usage'
complete -c corvane-wifi -n '__corvane_wifi_action ""' -a status -d 'Show the connection'
complete -c corvane-wifi -n '__corvane_wifi_action ""' -a list -d 'Scan and list networks'
complete -c corvane-wifi -n '__corvane_wifi_action ""' -a pick -d 'Choose a network by number'
complete -c corvane-wifi -n '__corvane_wifi_action ""' -a connect -d 'Join a network'
complete -c corvane-wifi -n '__corvane_wifi_action ""' -a disconnect -d 'Leave the network'
complete -c corvane-wifi -n '__corvane_wifi_action ""' -a forget -d 'Remove a saved network'
complete -c corvane-wifi -n '__corvane_wifi_action ""' -a help -d 'Print the usage'
complete -c corvane-wifi -n '__corvane_wifi_action status list connect disconnect forget' -l json \
    -d 'Print JSON'
complete -c corvane-wifi -n '__corvane_wifi_action list' -l cached -d 'Do not scan'
complete -c corvane-wifi -n '__corvane_wifi_action connect' -l open -d 'Without a password'
complete -c corvane-wifi -n '__corvane_wifi_action connect' -l password-stdin \
    -d 'Read the password from standard input'
complete -c corvane-wifi -n '__corvane_wifi_action forget' -l yes -d 'Required'
complete -c corvane-wifi -n '__corvane_wifi_at connect 0' -a '(__corvane_wifi_names all)'
complete -c corvane-wifi -n '__corvane_wifi_at forget 0' -a '(__corvane_wifi_names saved)'
