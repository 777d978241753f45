# shellcheck shell=bash
# `./run demo`. To be sourced.

# json_value NAME: of the one-line JSON object on standard input, a member that is a text or number.
json_value() { sed -nE "s/.*\"$1\" *: *\"?([^\",}]*).*/\1/p"; }

# show STATUS COMMAND...: shows a command, then its output; it must end with the status.
show() {
    local expected=$1 status=0
    shift
    printf '\n$ %s\n' "$(printf '%q ' "$@")"
    PATH=$demo_programs:$PATH "$@" </dev/null || status=$?
    [ "$status" = "$expected" ] ||
        fail "The command above ended with status $status, not with $expected."
}

end_emulator() {
    [ -n "${emulator_pid:-}" ] || return
    kill "$emulator_pid" 2>/dev/null
    wait "$emulator_pid" 2>/dev/null
}

# use_account TYPE ADDRESS-OR-HOST: sets demo's options for octavia's account there. A public host's name
# is led to this machine; an address is this machine's own.
use_account() {
    account=(--service "$1" --user octavia --cacert "$ca_file")
    case $2 in
        https:*) account+=(--url "$2") ;;
        *) account+=(--connect-to "$2:443:127.0.0.1:$port") ;;
    esac
}

# demo FOLDER-OF-PROGRAMS
demo() {
    demo_programs=$1
    local line port ca_file
    say "Starting a hosting service of our own on this machine"
    coproc emulator { exec "$demo_programs/korvogit-emulator" --json --until-stdin-closes; }
    emulator_pid=$!
    trap end_emulator EXIT
    IFS= read -r -t 60 line <&"${emulator[0]:-}" || fail "The emulator did not start."
    port=$(json_value httpsPort <<<"$line")
    ca_file=$(json_value caFile <<<"$line")
    if [ -z "$port" ] || [ ! -r "$ca_file" ]; then
        fail "The emulator did not say where it is: $line"
    fi
    echo "It listens on port $port; its certificates are signed by $ca_file."

    local own_server=https://localhost:$port account=()
    export KORVOGIT_TOKEN=demo-token-octavia

    say "The services that the library knows"
    show 0 korvogit services

    say "An account on a company's server: GitHub Enterprise"
    use_account GitHubEnterprise "$own_server"
    show 0 korvogit validate "${account[@]}"
    show 0 korvogit repositories "${account[@]}" --per-page 6
    show 0 korvogit repositories "${account[@]}" --per-page 6 --page 2

    say "The same on public GitHub, whose name is led to this machine"
    use_account GitHub api.github.com
    show 0 korvogit validate "${account[@]}"
    show 0 korvogit repositories "${account[@]}" --per-page 6 --sort name --direction descending

    say "GitLab, on a company's server and at gitlab.com: here archived projects can be left out"
    use_account GitLabSelfHosted "$own_server"
    show 0 korvogit validate "${account[@]}"
    show 0 korvogit repositories "${account[@]}" --per-page 6 --state open
    use_account GitLab gitlab.com
    show 0 korvogit validate "${account[@]}"
    show 0 korvogit repositories "${account[@]}" --per-page 6 --state closed

    say "Bitbucket Cloud, first with an access token, then with a password"
    use_account Bitbucket api.bitbucket.org
    show 0 korvogit validate "${account[@]}"
    KORVOGIT_TOKEN=demo-password-octavia
    show 0 korvogit repositories "${account[@]}" --credential-type Basic --per-page 6 \
        --sort updated --visibility private

    say "Bitbucket Server, where a token stands in the password's place"
    KORVOGIT_TOKEN=demo-token-octavia
    use_account BitbucketServer "$own_server"
    show 0 korvogit validate "${account[@]}" --credential-type Token
    show 0 korvogit repositories "${account[@]}" --credential-type Token --page 1 --per-page 6

    say "A wrong token"
    KORVOGIT_TOKEN=not-the-token
    use_account GitLabSelfHosted "$own_server"
    show 1 korvogit validate "${account[@]}"

    say "That was the library at work over HTTPS; everything that was started has ended."
}
