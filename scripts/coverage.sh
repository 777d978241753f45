# shellcheck shell=bash
# `./run coverage`. To be sourced.

# Runs all tests in a build that counts lines. Prints a table of the library's files, with the lines that
# no test ran, and one of its folders; writes both, and a page per file, to build/coverage/report.
coverage() {
    local report=build/coverage/report folder
    mkdir -p build
    configure coverage
    build coverage
    # What earlier tests ran is not what these run.
    find build/coverage -name '*.gcda' -delete
    ctest --preset coverage --parallel "$(nproc)" || fail "Lines that a failing test ran prove nothing."
    mkdir -p "$report"
    gcovr --root . --object-directory build/coverage --filter '(core|service|adapters|support)/' \
        --txt "$report/files.txt" --csv "$report/files.csv" --html-details "$report/index.html" ||
        fail "The counts could not be read."
    for folder in core service adapters support; do
        # After the file's name, how many lines there are and how many of them ran.
        awk -F, -v folder=$folder 'index($1, folder "/") == 1 { all += $2; ran += $3 }
            END { printf "%-10s %5d lines, %5d run, %5.1f %%\n", folder "/", all, ran, 100 * ran / all }' \
            "$report/files.csv"
    done >"$report/folders.txt"
    cat "$report/files.txt" "$report/folders.txt"
}
