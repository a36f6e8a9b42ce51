"""How fast Belfry is against what people would use instead, on sound servers and displays of its own.

    bench/run [--rings N] [--starts N] [--minutes N] [--save FILE] [onset|database|start|idle|growth ...]
    bench/run --table FILE ...          the saved runs side by side, as docs/performance.md has them

Runs all five when none is named, in three quarters of an hour. For a machine that does nothing else; takes root or sudo
for cron, and leaves the system's own alone. `taskset -c 0 bench/run` measures on one core.
"""
import argparse, json, math, os, pathlib, signal, statistics, subprocess, tempfile, time

import lab

rows = []


def figure(value, unit):
    """A ratio with two decimals, anything else with three digits."""
    if not unit:
        return f"{value:.2f}"
    digits = 2 - math.floor(math.log10(abs(value))) if value else 0
    return f"{value:,.{min(4, max(0, digits))}f} {unit}"


def row(what, value, unit="", limit=None):
    """Prints and keeps a figure; without a unit it is a ratio. `limit` is the aim: the figure is to be at most that."""
    rows.append({"what": what, "value": value, "unit": unit, "limit": limit})
    aim = "" if limit is None else f"at most {limit} {unit}".rstrip() + (": met" if value <= limit else ": MISSED")
    print(f"{what:68} {figure(value, unit):>12}  {aim}", flush=True)


def print_table(files):
    """Saved runs as a Markdown table for each part: a line for each figure, a column for each run."""
    runs = [json.loads(pathlib.Path(file).read_text()) for file in files]
    for name, run in zip("ABCDEFGH", runs):
        print(f"- {name}: {run['machine']}")
    for part in runs[0]["parts"]:
        print(f"\n### {part}\n\n| | {' | '.join('ABCDEFGH'[:len(runs)])} | Aim |\n|---|{'---|' * len(runs)}---|")
        columns = [{each["what"]: each for each in run["parts"].get(part, [])} for run in runs]
        for what, each in columns[0].items():
            figures = [figure(column[what]["value"], each["unit"]) if what in column else "" for column in columns]
            aim = "" if each["limit"] is None else f"{each['limit']} {each['unit']}".rstrip()
            print(f"| {what} | {' | '.join(figures)} | {aim} |")


SLOW_DISK = "Belfry with 20 ms a sync"


# ---- onset: from the second of the wall clock to the first sample of the sound

def isolated_cron(folder, job):
    """The command of a real cron with that one job and none of the system's: it sees files of ours in their place."""
    for name in ("jobs", "spool", "run"):
        (folder / name).mkdir()
    (folder / "crontab").write_text(job)
    hidden = {"crontab": "/etc/crontab", "jobs": "/etc/cron.d", "spool": "/var/spool/cron/crontabs", "run": "/run"}
    mounts = " && ".join(f"mount --bind {folder / ours} {theirs}" for ours, theirs in hidden.items())
    return [*([] if os.geteuid() == 0 else ["sudo"]), "unshare", "--mount", "sh", "-c", f"{mounts} && exec cron -f"]


def shell_loop(player, second):
    """The command of a shell that sleeps until that second of each minute, then plays."""
    seconds = f"date +%S.%N | awk '{{ s = {second} - $1; print (s > 0 ? s : s + 60) }}'"
    return ["sh", "-c", f"while sleep $({seconds}); do {player}; done"]


def onset(build, options):
    for kind in ("PulseAudio", "PipeWire"):
        onset_with(kind, build, options)


def onset_with(kind, build, options):
    """The loops ring in seconds of their own, so that starting their players holds up nobody else."""
    seconds = {"Belfry": 0, SLOW_DISK: 0, "cron and paplay": 0, "bare libpulse": 10, "a loop and mpv": 20, "a loop and ffplay": 40}
    with tempfile.TemporaryDirectory() as folder, lab.SoundServer(kind, [sink(name) for name in seconds]) as server:
        folder = pathlib.Path(folder)
        bell = lab.tone(folder / "bell.wav")
        plans = [lab.plan_row(i, i, bell) for i in range(24 * 60)]
        home = lab.make_home(folder / "home", build, plans)
        homes = {SLOW_DISK: lab.make_home(folder / "slow", build, plans) | {
            "LD_PRELOAD": str(build / "slow-sync.so"), "SLOW_SYNC_MS": "20"}}
        job = f"PULSE_SERVER={server.address}\n* * * * * root paplay --device=cron-and-paplay {bell}\n"
        commands = {"Belfry": [build / "belfry"], SLOW_DISK: [build / "belfry"],
                    "cron and paplay": isolated_cron(folder, job),
                    "bare libpulse": [build / "SoundFloor", "10"],
                    "a loop and mpv": shell_loop(f"mpv --no-terminal --no-video --ao=pulse {bell}", 20),
                    "a loop and ffplay": shell_loop(f"ffplay -loglevel quiet -nodisp -autoexit {bell}", 40)}
        players = []
        try:
            for name, command in commands.items():
                players.append(subprocess.Popen(command, start_new_session=True, env={
                    **homes.get(name, home), "QT_QPA_PLATFORM": "offscreen", "PULSE_SERVER": server.address,
                    "PULSE_SINK": sink(name), "SDL_AUDIODRIVER": "pulseaudio"}))
            time.sleep(60 - time.time() % 60 + 60 * options.rings - 10)
        finally:
            for player in players:
                end(player)
        late = {name: lab.lateness(server.recorders[sink(name)].onsets, second)[:options.rings]
                for name, second in seconds.items()}
    for name, values in late.items():
        if len(values) < options.rings:
            raise SystemExit(f"{kind}: {name}: {len(values)} rings heard of {options.rings}")
        row(f"{kind}: {name}, median", statistics.median(values), "ms")
        row(f"{kind}: {name}, worst", max(values), "ms", 100 if name == "Belfry" else None)
    medians = {name: statistics.median(values) for name, values in late.items()}
    belfry, floor, slow = (medians.pop(name) for name in ("Belfry", "bare libpulse", SLOW_DISK))
    row(f"{kind}: {SLOW_DISK}: median beyond Belfry's", slow - belfry, "ms")
    row(f"{kind}: Belfry's median beyond that of bare libpulse", belfry - floor, "ms", 30)
    row(f"{kind}: Belfry's median to the best of cron and the loops", belfry / min(medians.values()), limit=0.33)


def end(player):
    """Ends a program and all that it has started, if need be as root, as which cron was started."""
    try:
        os.killpg(player.pid, signal.SIGTERM)
    except PermissionError:
        subprocess.run(["sudo", "kill", "--", f"-{player.pid}"], check=True)
    player.wait()


def sink(name):
    return name.replace(" ", "-")


# ---- database, growth: what the benchmark programs measure, interleaved and repeated

def medians(program):
    """The median processor time of each benchmark of a program, by its name."""
    out = subprocess.run([program, "--benchmark_repetitions=9", "--benchmark_enable_random_interleaving=true",
                          "--benchmark_min_time=0.05", "--benchmark_report_aggregates_only=true", "--benchmark_format=json"],
                         env={**os.environ, "QT_QPA_PLATFORM": "offscreen"}, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=True).stdout
    return {each["run_name"]: each["cpu_time"] for each in json.loads(out)["benchmarks"]
            if each["aggregate_name"] == "median"}


def database(build, options):
    times = medians(build / "BenchDatabase")
    libraries = {"bare SQLite": ("Bare", 1.15), "QtSql": ("QtSql", 1), "SQLiteCpp": ("SQLiteCpp", 1.05)}
    for work, ours, other in (("reading 100,000 plans as the stores do", "readStores", "read"),
                              ("writing 1,000 plans", "writeLayer", "write")):
        for library, (code, limit) in libraries.items():
            row(f"{work}, to {library}", times[ours] / times[other + code], limit=limit)


def growth(build, options):
    """A straight line costs ten times as much for ten times the plans, and a little more where they leave the cache."""
    costs = {}
    for name, nanoseconds in [*medians(build / "BenchTick").items(), *medians(build / "BenchRedraw").items()]:
        work, _, plans = name.rpartition("/")
        costs.setdefault(work, {})[int(plans)] = nanoseconds / 1e6
    for work, cost in costs.items():
        for plans, milliseconds in sorted(cost.items()):
            row(f"{work}, {plans:,} plans", milliseconds, "ms")
        row(f"{work}, 100,000 plans to 10,000", cost[100_000] / cost[10_000], limit=15)


# ---- start, idle: beside a Qt window with nothing in it

def homes(folder, build):
    """What is started side by side: commands and environments. The word shows what fonts cost any window."""
    def home(name, plans):
        return lab.make_home(f"{folder}/{name}", build, [lab.plan_row(i, 0) for i in range(plans)])
    return {"empty window": ([build / "EmptyWindow"], home("empty", 0)),
            "window with one word": ([build / "EmptyWindow", "Belfry"], home("word", 0)),
            "Belfry": ([build / "belfry"], home("one", 1)),
            "Belfry with 10,000 plans": ([build / "belfry"], home("many", 10_000))}


def first_frame(command, environment):
    """Milliseconds from the start of the process to its first frame, those of processor time, and peak memory in MB."""
    noted = pathlib.Path(environment["HOME"]) / "first-frame"
    began = time.monotonic()
    pid = os.posix_spawn(command[0], [str(part) for part in command],
                         {**environment, "QT_QPA_GENERIC_PLUGINS": "firstframe", "FIRST_FRAME": str(noted)})
    os.waitpid(pid, 0)
    moment, processor, memory = map(float, noted.read_text().split())
    return (moment - began) * 1000, processor * 1000, memory / 1024


def start(build, options):
    for kind in ("X11", "Wayland"):
        with tempfile.TemporaryDirectory() as folder, lab.display(kind):
            cases = homes(folder, build)
            for case in cases.values():
                first_frame(*case)              # warms the disk's cache
            runs = [{name: first_frame(*case) for name, case in cases.items()} for _ in range(options.starts)]
        empty = columns(runs, "empty window")
        figures = {"first frame": ("ms", 1.3), "processor time": ("ms", 1.5), "peak memory": ("MB", 1.25)}
        for (what, (unit, _)), value in zip(figures.items(), empty):
            row(f"{kind}: {what}, empty window", value, unit)
        for name in list(cases)[1:]:
            for (what, (_, limit)), own, other in zip(figures.items(), columns(runs, name), empty):
                row(f"{kind}: {what}, {name}", own / other, limit=limit if name == "Belfry" else None)


def columns(runs, name):
    return [statistics.median(column) for column in zip(*(run[name] for run in runs))]


def processor_ms(pid):
    """The processor time that a process has had, with that of its threads that have ended."""
    return time.clock_gettime(~pid << 3 | 2) * 1000     # what clock_getcpuclockid(3) gives


def idle(build, options):
    for kind in ("X11", "Wayland"):
        with tempfile.TemporaryDirectory() as folder, lab.display(kind):
            running = {name: subprocess.Popen(command, env=environment)
                       for name, (command, environment) in homes(folder, build).items()}
            time.sleep(5)                       # until all that is done once is done
            before = {name: processor_ms(process.pid) for name, process in running.items()}
            time.sleep(60 * options.minutes)
            used = {name: processor_ms(process.pid) - before[name] for name, process in running.items()}
            for process in running.values():
                process.terminate()
                process.wait()
        for name, milliseconds in used.items():     # 0.1 % of a core is 60 ms
            row(f"{kind}: {name}", milliseconds / options.minutes, "ms", 60 if name.startswith("Belfry") else None)


def main():
    parser = argparse.ArgumentParser(description=__doc__.partition("\n")[0])
    parts = {part.__name__: part for part in (onset, database, start, idle, growth)}
    parser.add_argument("parts", nargs="*", metavar="PART", help=f"of {', '.join(parts)}; all when none is named")
    parser.add_argument("--rings", type=int, default=12, help="rings of each, one a minute (12)")
    parser.add_argument("--starts", type=int, default=21, help="starts of each (21)")
    parser.add_argument("--minutes", type=int, default=1, help="idle minutes (1)")
    parser.add_argument("--build", help="the build folder (build/bench)")
    parser.add_argument("--save", metavar="FILE", help="keep the figures, for --table")
    parser.add_argument("--table", nargs="+", metavar="FILE", help="print saved runs as a table, and measure nothing")
    options = parser.parse_args()
    if options.table:
        return print_table(options.table)
    build = lab.build_folder(options.build)
    result = {"machine": lab.machine(), "parts": {}}
    for part in options.parts or parts:
        if part not in parts:
            parser.error(f"there is no part {part}")
        print(f"\n{part}, on {result['machine']}")
        rows.clear()
        parts[part](build, options)
        result["parts"][part] = list(rows)
        if options.save:
            pathlib.Path(options.save).write_text(json.dumps(result, indent=1))


if __name__ == "__main__":
    main()
