# Completion of korvogit for bash. It stands on its own: the names are written here, so that pressing Tab
# starts no program, and a test compares them with what the program's --help says.

# The names of a command's options; those of a command without options of its own are its subcommands.
_korvogit_names() { # COMMAND
    local account="--service --url --user --credential-type --token-stdin"
    local network="--cacert --connect-to --proxy --timeout"
    local sign_in="--service --client-id --scopes --user"
    local step="$sign_in --redirect-url --state --format --help"
    case $1 in
        '') echo "services validate repositories oauth login --version --help" ;;
        services) echo "--format --help" ;;
        validate) echo "$account $network --format --help" ;;
        repositories)
            echo "$account $network --format --help" \
                "--all --page --per-page --sort --direction --state --visibility --columns --sort-by" ;;
        login)
            echo "$sign_in $network --port --wait --no-browser --list-repositories --format --help" ;;
        oauth) echo "authorize-url verify token --help" ;;
        'oauth authorize-url') echo "$step" ;;
        'oauth verify') echo "$step --response-url" ;;
        'oauth token') echo "$step $network --code --code-stdin --refresh" ;;
    esac
}

# What may follow an option. Fails when it is no option that takes a value.
_korvogit_values() { # COMMAND OPTION
    case "$1 $2" in
        *' --service')
            echo "AzureDevOps AzureDevOpsServer Bitbucket BitbucketServer" \
                "GitHub GitHubEnterprise GitLab GitLabSelfHosted" ;;
        *' --credential-type') echo "Token OAuth2 Basic" ;;
        'repositories --format') echo "table json csv jsonl" ;;
        *' --format') echo "table json" ;;
        *' --sort') echo "default identifier name created updated last-activity" ;;
        *' --columns' | *' --sort-by')
            echo "identifier name fullName descriptiveText path fullPath ownerIdentifier ownerName" \
                "state visibility isFork numberOfStars numberOfForks avatarURL webURL" \
                "SSHRepositoryURL HTTPSRepositoryURL defaultBranchName" ;;
        *' --direction') echo "default ascending descending" ;;
        'repositories --state') echo "open closed" ;;
        *' --visibility') echo "public private internal" ;;
        *' '--help | *' '--version | *' '--all | *' '--*-stdin | *' '--refresh | *' '--no-browser | \
            *' '--list-repositories)
            return 1 ;;
        *' '--*) ;;
        *) return 1 ;;
    esac
}

_korvogit() {
    local current=${COMP_WORDS[COMP_CWORD]} option=${COMP_WORDS[COMP_CWORD - 1]}
    # bash takes --name=value for three words.
    if [ "$option" = = ]; then
        option=${COMP_WORDS[COMP_CWORD - 2]}
    elif [ "$current" = = ]; then
        current=
    fi

    local command=
    if [ "$COMP_CWORD" -gt 1 ]; then command=${COMP_WORDS[1]}; fi
    if [ "$command" = oauth ] && [ "$COMP_CWORD" -gt 2 ]; then command+=" ${COMP_WORDS[2]}"; fi

    local words
    if [ "$option" = --cacert ]; then
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
        return
    fi
    words=$(_korvogit_values "$command" "$option") || words=$(_korvogit_names "$command")
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
}

complete -F _korvogit korvogit
