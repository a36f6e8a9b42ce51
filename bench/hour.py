"""An hour of the real program while both cores are kept busy: how many seconds had no tick, how late ticks were.

    bench/hour [SECONDS [BUILD]]        3600 and build/bench by default

In the same event loop run two free-running timers of one second, one that began in the middle of a second and one that
began at its end: they show what the scheduler's timer saves. A plan rings in every second minute, into a sound server of
its own.
"""
import collections, os, pathlib, sqlite3, subprocess, sys, tempfile, time

import lab

seconds = int(sys.argv[1]) if len(sys.argv) > 1 else 3600
build = lab.build_folder(*sys.argv[2:3])
TIMERS = {"tick": "Belfry's tick", "free500": "free-running, from .500", "free995": "free-running, from .995"}


def summary(moments):
    """Of the wall-clock times in ms of a timer's events: what became of the seconds from the first to the last."""
    seen = collections.Counter(moment // 1000 for moment in moments)
    skipped = max(seen) - min(seen) + 1 - len(seen)
    doubled = sum(count > 1 for count in seen.values())
    late = lab.in_words([moment % 1000 for moment in moments])
    return f"{len(seen)} seconds seen, {skipped} skipped, {doubled} doubled; after the second: {late}"


with tempfile.TemporaryDirectory() as folder, lab.SoundServer("PulseAudio", ["sink"]) as server:
    folder = pathlib.Path(folder)
    now = time.localtime()
    minutes = [now.tm_hour * 60 + now.tm_min + i for i in range(2, seconds // 60 + 2, 2)]
    bell = lab.tone(folder / "bell.wav")
    environment = lab.make_home(folder / "home", build, [lab.plan_row(i, minute, bell) for i, minute in enumerate(minutes)])
    environment |= {"PULSE_SERVER": server.address, "QT_QPA_GENERIC_PLUGINS": "ticklog",
                    "TICK_LOG": str(folder / "ticks"),
                    "QT_QPA_PLATFORM": "offscreen"}
    load = [subprocess.Popen(["sh", "-c", "while :; do :; done"]) for _ in range(os.cpu_count())]
    belfry = subprocess.Popen([str(build / "belfry")], env=environment)
    began = time.time()
    try:
        belfry.wait(seconds)
        raise SystemExit(f"Belfry ended early, with {belfry.returncode}")
    except subprocess.TimeoutExpired:
        pass
    finally:
        for process in (belfry, *load):
            process.terminate()
            process.wait()
    lines = [line.split() for line in (folder / "ticks").read_text().splitlines()]
    for timer, name in TIMERS.items():
        print(f"{name + ':':25}", summary([int(moment) for key, moment in lines if key == timer]))
    rings = sum(began < minute < began + seconds - 1 for minute in range(int(began) // 60 * 60 + 120, int(began) + seconds, 120))
    late = lab.lateness(server.recorders["sink"].onsets)
    logged, = sqlite3.connect(folder / "home/Documents/data.db").execute("select count(*) from history").fetchone()
    print(f"{rings} rings due, {logged} logged, {len(late)} heard" + (f"; after the minute: {lab.in_words(late)}" if late else ""))
