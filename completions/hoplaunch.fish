# SPDX-License-Identifier: MIT
# fish completion for hoplaunch and hopexplain

# The programs on PATH whose names begin with a text.  fish quotes them; a name with a line
# feed would come as two.
function __hoplaunch_programs
    for folder in $PATH
        for file in $folder/$argv[1]*
            set -l name (string replace --regex '^.*/' '' -- $file | string collect)
            if test -f $file -a -x $file; and not string match --quiet --regex '[[:cntrl:]]' -- $name
                echo -- $name
            end
        end
    end
end

function __hoplaunch_files
    for file in $argv[1]*
        if not string match --quiet --regex '[[:cntrl:]]' -- $file
            test -d $file; and echo -- $file/; or echo -- $file
        end
    end
end

# __hoplaunch_value KEY TEXT: the values of a key.
function __hoplaunch_value
    switch (string lower -- $argv[1])
        case -log
            __hoplaunch_files $argv[2]
        case -program
            if string match --quiet '*/*' -- $argv[2]
                __hoplaunch_files $argv[2]
            else
                __hoplaunch_programs $argv[2]
            end
        case -style
            string split ' ' 'equals separate'
        case -format
            test (commandline -opc)[1] = hopexplain; and string split ' ' 'text json'
    end
end

function __hoplaunch_keys
    # list of docs/items.tsv: fish
    string split ' ' -- '-log= -program= -style= -portArg= -PROGRAMS= -VNC_OPTIONS= -URI_SCHEME= -dummy='
    string split ' ' -- '-MaxShortName= -LogDateFormat= -LogTimeZone= -defaultLanguage='
    string split ' ' -- '-refcount=1 -hoplaunch=1 -configDB=1 -reportThread=1 -reportStack=1'
    # end of list
    set -l words (commandline -opc)
    if test $words[1] = hopexplain
        echo -- -format=
        test (count $words) -eq 1; and string split ' ' -- '--help --version'
    end
end

# Every option has a value, after an "=" or as the next argument.  Keys count in any letter
# case, except for those of trace flags.
function __hoplaunch_words
    set -l key ''
    for word in (commandline -opc)[2..-1]
        if test -n "$key"; or not string match --quiet -- '-*' $word; or string match --quiet -- '*=*' $word
            set key ''
        else
            set key $word
        end
    end
    set -l typed (string unescape -- (commandline -ct | string collect) | string collect)
    if test -n "$key"
        __hoplaunch_value $key "$typed"
    else if string match --quiet --regex -- '^-[^=]*=' "$typed"
        set -l parts (string split --max 1 = -- $typed)
        for value in (__hoplaunch_value $parts[1] "$parts[2]")
            echo -- $parts[1]=$value
        end
    else if string match --quiet -- '-*' "$typed"
        __hoplaunch_keys
    else
        string split ' ' 'vnc:// ssh://'
    end
end

complete -c hoplaunch -f -a '(__hoplaunch_words)'
complete -c hopexplain -f -a '(__hoplaunch_words)'
