# fish completion for ulotask. The candidates come from the program itself.

function __ulotask_complete
    set -l words (commandline -opc)
    set -l current (commandline -ct)
    for line in ($words[1] __complete $words[2..] "$current" 2>/dev/null)
        if test "$line" = \t"files"
            __fish_complete_path "$current"
        else
            echo $line
        end
    end
end

complete -c ulotask -f -k -a '(__ulotask_complete)'
