# Builds for ./mmi and tests/scripts/run-tests, never silent: one line saying what is built and where the
# log goes, then ninja's own step counter on stderr (one updating line on a terminal, a plain line
# every few seconds otherwise), and the end of the log when the build fails. Source it with `root`
# set to the checkout.

# PATH as the user would type it from the folder they are in.
shown_path() {
    case "$1" in
        "$PWD"/*) echo "${1#"$PWD"/}" ;;
        *) echo "$1" ;;
    esac
}

# What erases the progress line on a terminal: an escape sequence, or blanks when NO_COLOR asks
# for plain output.
progress_clear() {
    if [ -z "${NO_COLOR:-}" ]; then printf '\r\033[K'; else printf '\r%60s\r' ''; fi
}

# Copies the build's output (stdin) to LOG and, once the build does real work (a step other than
# ninja's check that nothing changed) or takes longer than a second, says ANNOUNCEMENT and then
# the step it is at, on stderr. Fails when it said nothing, so the caller knows no work was done.
# On a terminal the step line updates in place, with a carriage return and blanks rather than an
# escape sequence when NO_COLOR asks for plain output. When build_ready_file is set, it creates
# that file once a line matches build_ready_pattern (a step is done), for a caller that waits on
# one step of a build running in the background. The lines begin with build_me (default mmi).
build_progress() {  # build_progress LOG ANNOUNCEMENT SAID (1 when it was said already)
    local log="$1" announcement="$2" said="$3" line part="" step="configuring" last="" tty=0 me="${build_me:-mmi}"
    local start=$SECONDS next=$((SECONDS + 5))
    [ -t 2 ] && tty=1
    local clear
    clear=$(progress_clear)
    exec 3>"$log"
    while :; do
        if IFS= read -r -t 1 line; then
            line="$part$line" part=""
            printf '%s\n' "$line" >&3
            [[ $line =~ ^\[([0-9]+)/([0-9]+)\] ]] && step="step ${BASH_REMATCH[1]} of ${BASH_REMATCH[2]}"
            [ -z "${build_ready_file:-}" ] || [[ ! $line =~ $build_ready_pattern ]] || : >"$build_ready_file"
            [[ $line =~ Re-checking\ globbed|^ninja:\ no\ work ]] || [ $said -eq 1 ] ||
                { echo "$announcement" >&2; said=1; }
        elif [ $? -gt 128 ]; then
            part="$part$line"  # a timeout keeps what it read of the line
            [ $said -eq 1 ] || { echo "$announcement" >&2; said=1; }
        else
            printf '%s' "$part$line" >&3
            break
        fi
        if [ $said -eq 0 ]; then
            :
        elif [ $tty -eq 1 ] && [ "$step $((SECONDS - start))" != "$last" ]; then
            last="$step $((SECONDS - start))"
            printf '%s%s: %s (%d s)' "$clear" "$me" "$step" $((SECONDS - start)) >&2
        elif [ $tty -eq 0 ] && [ $SECONDS -ge $next ]; then
            next=$((SECONDS + 5))
            printf '%s: %s (%d s)\n' "$me" "$step" $((SECONDS - start)) >&2
        fi
    done
    exec 3>&-
    [ $tty -eq 0 ] || [ $said -eq 0 ] || printf '%s' "$clear" >&2
    [ $said -eq 1 ]
}

# Makes FOLDER (and its parents) or ends the command with exit 1, naming the folder, the reason
# and FIX (by default: a folder of the checkout, so make it writable or use a clone).
writable_folder() {  # writable_folder FOLDER WHAT [FIX]
    local err
    if err=$(mkdir -p -- "$1" 2>&1) && [ -w "$1" ] && [ -x "$1" ]; then return 0; fi
    err="${err##*: }"
    echo "mmi: cannot write the $2 $(shown_path "$1") (${err:-Permission denied}); ${3:-make it writable, or work in a clone of the checkout you can write}" >&2
    exit 1
}

# Makes FOLDER for the logs, naming MMI_LOG_DIR and its fix when that variable chose the folder.
log_folder() {  # log_folder FOLDER
    if [ -n "${MMI_LOG_DIR:-}" ]; then
        writable_folder "$1" "MMI_LOG_DIR folder" "set MMI_LOG_DIR to a folder you can write, or unset it for build/"
    else
        writable_folder "$1" "log folder"
    fi
}

# Builds TARGETs (everything when none) of PRESET, which WHAT describes, configuring it first when
# it has no build folder yet. Says nothing when they are up to date; exits 1 when the build fails.
# When build_first is set (targets separated by blanks), those are built first, on their own.
build() {  # build PRESET WHAT [TARGET]...
    local preset="$1" what="$2"
    shift 2
    local bdir="$root/build/$preset" log="${MMI_LOG_DIR:-$root/build}/mmi-build-$preset.log"
    local start=$SECONDS targets=() first=() status
    read -ra first <<<"${build_first:-}"
    # Two more jobs than cores, as ninja runs on larger machines; on two cores it would run three,
    # and the longest compiles of a first build would not all start at once.
    local jobs=$(($(nproc 2>/dev/null || echo 2) + 2))
    local announcement="mmi: building $what ($preset build); log: $(shown_path "$log")"
    [ $# -eq 0 ] || targets=(--target "$@")
    writable_folder "$bdir" "build folder"
    log_folder "$(dirname "$log")"
    local said=0
    [ -f "$bdir/build.ninja" ] || { echo "$announcement" >&2; said=1; }
    (
        cd "$root" && { [ -f "$bdir/build.ninja" ] || cmake --preset "$preset"; } &&
            { [ ${#first[@]} -eq 0 ] ||
                NINJA_STATUS='[%f/%t] ' cmake --build --preset "$preset" --target "${first[@]}" -- -k 0 -j "$jobs"; } &&
            NINJA_STATUS='[%f/%t] ' cmake --build --preset "$preset" "${targets[@]}" -- -k 0 -j "$jobs"
    ) 2>&1 | build_progress "$log" "$announcement" $said && status=(0 0) || status=("${PIPESTATUS[@]}")
    if [ "${status[0]}" -ne 0 ]; then
        tail -n 40 "$log" >&2
        echo "mmi: the $preset build failed; full log: $(shown_path "$log")" >&2
        exit 1
    fi
    [ "${status[1]}" -ne 0 ] || echo "mmi: built in $((SECONDS - start)) s" >&2
}
