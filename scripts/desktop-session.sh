# Shared by scripts/e2e.sh and scripts/screenshots.sh (sourced, not run): starts the desktop
# program with settings of its own in a work folder and drives it with the real pointer.
# The caller sets `work` (a folder it owns) and `magick` (ImageMagick's convert, or empty).

app_pid=

fail() {
    echo "${session_name:-tintorra}: FAILED: $*" >&2
    if command -v xwd >/dev/null && [ -n "${magick:-}" ]; then
        xwd -root -silent 2>/dev/null | "$magick" xwd:- "$work/failure.png" 2>/dev/null || true
    fi
    exit 1
}

# Polls a condition every tenth of a second for at most the given seconds.
wait_for() {
    local seconds=$1
    shift
    local tries=$((seconds * 10))
    while ! "$@" 2>/dev/null; do
        tries=$((tries - 1))
        [ "$tries" -gt 0 ] || return 1
        sleep 0.1
    done
}

stop_program() {
    if [ -n "$app_pid" ] && kill -0 "$app_pid" 2>/dev/null; then
        kill "$app_pid" 2>/dev/null || true
        wait "$app_pid" 2>/dev/null || true
    fi
    app_pid=
}

# start_program TINTORRA [FILE...]: settings and recent files in the work folder, the welcome
# tour closed; sets `window` to the program's first window once it shows (at most 20 s).
start_program() {
    local program=$1
    shift
    export XDG_CONFIG_HOME=$work/config XDG_DATA_HOME=$work/data
    mkdir -p "$XDG_CONFIG_HOME/velmora" "$XDG_DATA_HOME"
    printf '[General]\nshowWelcomeWindow=false\n' > "$XDG_CONFIG_HOME/velmora/Tintorra.ini"
    TINTORRA_WIDGET_MAP=$work/widgets "$program" "$@" > "$work/program.log" 2>&1 &
    app_pid=$!
    timeout 20 xdotool search --sync --onlyvisible --pid "$app_pid" > "$work/windows" ||
        fail "no window of the program appeared within 20 s"
    window=$(head -n 1 "$work/windows")
}

# widget_rect NAME: prints "x y width height" of the named widget once the program lists it.
widget_rect() {
    wait_for 20 grep -q "^$1 " "$work/widgets" ||
        fail "the widget map never listed '$1' (see $work/widgets)"
    grep "^$1 " "$work/widgets" | head -n 1 | cut -d' ' -f2-
}

# drag_ring X Y WIDTH HEIGHT FROM TO: presses on a hue ring's band at FROM degrees (which moves
# the hue there) and drags counter-clockwise to TO degrees in small steps, as a hand would.
drag_ring() {
    local x=$1 y=$2 w=$3 h=$4 from=$5 to=$6
    local cx=$((x + w / 2)) cy=$((y + h / 2))
    local radius=$(((w < h ? w : h) * 87 / 200))
    local degrees px py
    point() {
        awk -v d="$1" -v cx="$cx" -v cy="$cy" -v r="$radius" \
            'BEGIN { a = d * atan2(0, -1) / 180; printf "%d %d\n", cx + r * cos(a), cy - r * sin(a) }'
    }
    read -r px py < <(point "$from")
    xdotool mousemove --sync "$px" "$py" mousedown 1
    for degrees in $(seq $((from + 6)) 6 "$to"); do
        read -r px py < <(point "$degrees")
        xdotool mousemove --sync "$px" "$py"
        sleep 0.02
    done
    xdotool mouseup 1
}
