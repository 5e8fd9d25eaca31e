# SPDX-License-Identifier: MIT
# fish completion for hopopen

# What hopopen knows: names of viewers, and schemes.  Neither has a character that means
# anything to the shell, and no other text of the list can look like one of them, as its
# quotes have a backslash in front.
function __hopopen_viewers
    command hopopen --list --format=json 2>/dev/null |
        string match --all --regex '\{"name":"[a-z0-9-]+"' |
        string replace --regex '.*:"([^"]*)"' '$1'
end

function __hopopen_schemes
    command hopopen --list --format=json 2>/dev/null |
        string match --all --regex '"schemes":\[[^]]*\]' |
        string replace '"schemes":' '' |
        string match --all --regex '[a-z][a-z0-9+.-]*' | sort -u
end

# __hopopen_after OPTION: the words before this one end with that option and some values.
function __hopopen_after
    set -l options (string match --regex -- '^-.*' (commandline -opc))
    test (count $options) -gt 0; and string match -q --regex -- "^--$argv[1](=|\$)" $options[-1]
end

# A link may come when nothing else is asked for.
function __hopopen_wants_link
    not string match -q --regex -- '^--(list|check|use|forget|for(=|$)|trust|distrust)' (commandline -opc)
end

complete -c hopopen -f
complete -c hopopen -n __hopopen_wants_link -a '(__hopopen_schemes)://' -d 'Link'
complete -c hopopen -l viewer -x -a '(__hopopen_viewers)' -d 'Open the link in this viewer'
complete -c hopopen -l dry-run -d 'Print what would happen, and start nothing'
complete -c hopopen -l format -x -a 'text json' -d 'Form of what is printed'
complete -c hopopen -l log -r -F -d 'Append a log to this file'
complete -c hopopen -l quiet -d 'Show no message'
complete -c hopopen -l list -d 'Print the viewers, and which links they open'
complete -c hopopen -l check -d 'Say why a click on a link does nothing'
complete -c hopopen -l use -x -a '(__hopopen_viewers)' -d 'Open links in this viewer from now on'
complete -c hopopen -l forget -x -a '(__hopopen_schemes)' \
    -d 'Choose no viewer for these schemes any more'
complete -c hopopen -n '__hopopen_after use; or __hopopen_after forget' -a '(__hopopen_schemes)'
complete -c hopopen -l for -x -d 'Use or forget for this machine'
complete -c hopopen -l trust -x -d 'Trust these machines'
complete -c hopopen -l distrust -x -d 'Trust these machines no more'
complete -c hopopen -l version -d 'Print the version'
complete -c hopopen -s h -l help -d 'Print the options'
