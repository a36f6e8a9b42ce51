"""How fast Belfry is against what people would use instead: one table, all of its ratios from this one run.

    bench/run [--rings N] [--starts N] [--minutes N] [--build FOLDER] [onset|database|start|idle|growth ...]

Runs all five when none is named, in half an hour. For a machine that does nothing else; takes root or sudo for cron.
Sounds and windows go to a sound server and a display of its own, and the system's cron is left alone.
"""
import argparse, json, os, pathlib, signal, statistics, subprocess, tempfile, time

import lab


def row(what, figure, aim=""):
    print(f"{what:62} {figure:>12}  {aim}", flush=True)


def ratio(what, value, limit=None):
    row(what, f"{value:.2f}", f"below {limit}: {'met' if value < limit else 'MISSED'}" if limit else "")


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
    """The loops ring in seconds of their own, so that starting their players holds up nobody else."""
    seconds = {"Belfry": 0, "cron and paplay": 0, "a loop and mpv": 20, "a loop and ffplay": 40}
    with tempfile.TemporaryDirectory() as folder, lab.SoundServer([sink(name) for name in seconds]) as server:
        folder = pathlib.Path(folder)
        bell = lab.tone(folder / "bell.wav")
        home = lab.make_home(folder / "home", build, [lab.plan_row(i, i, bell) for i in range(24 * 60)])
        job = f"PULSE_SERVER={server.address}\n* * * * * root paplay --device=cron-and-paplay {bell}\n"
        commands = {"Belfry": [build / "belfry"], "cron and paplay": isolated_cron(folder, job),
                    "a loop and mpv": shell_loop(f"mpv --no-terminal --no-video --ao=pulse {bell}", 20),
                    "a loop and ffplay": shell_loop(f"ffplay -loglevel quiet -nodisp -autoexit {bell}", 40)}
        ringers = [subprocess.Popen(command, start_new_session=True, env={
            **home, "QT_QPA_PLATFORM": "offscreen", "PULSE_SERVER": server.address, "PULSE_SINK": sink(name),
            "SDL_AUDIODRIVER": "pulseaudio"}) for name, command in commands.items()]
        try:
            time.sleep(60 - time.time() % 60 + 60 * options.rings - 10)
        finally:
            for ringer in ringers:
                end(ringer)
        late = {name: lab.lateness(server.ears[sink(name)].onsets, second)[:options.rings] for name, second in seconds.items()}
    for name, values in late.items():
        if len(values) < options.rings:
            raise SystemExit(f"{name}: {len(values)} rings heard of {options.rings}")
        row(f"{name}: second to first sample, median of {options.rings}", f"{statistics.median(values):.0f} ms")
        verdict = f"below 100: {'met' if max(values) < 100 else 'MISSED'}" if name == "Belfry" else ""
        row(f"{name}: worst", f"{max(values):.0f} ms", verdict)
    best = min(statistics.median(values) for name, values in late.items() if name != "Belfry")
    ratio("Belfry's median to the best of the others", statistics.median(late["Belfry"]) / best, 0.33)


def end(ringer):
    """Ends a program and all that it has started, if need be as root, as which cron was started."""
    try:
        os.killpg(ringer.pid, signal.SIGTERM)
    except PermissionError:
        subprocess.run(["sudo", "kill", "--", f"-{ringer.pid}"], check=True)
    ringer.wait()


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
    for library, limit in {"Bare": 1.15, "QtSql": 1, "SQLiteCpp": 1.05}.items():
        ratio(f"reading 100,000 plans as the stores do to {library.replace('Bare', 'bare SQLite')}",
              times["readStores"] / times[f"read{library}"], limit)
    for library, limit in {"Bare": 1.2, "QtSql": 1, "SQLiteCpp": 1.05}.items():
        ratio(f"writing 1,000 plans: Belfry's layer to {library.replace('Bare', 'bare SQLite')}", times["writeLayer"] / times[f"write{library}"], limit)


def growth(build, options):
    """A straight line costs ten times as much for ten times the plans, and a little more where they leave the cache."""
    costs = {}
    for name, nanoseconds in [*medians(build / "BenchTick").items(), *medians(build / "BenchRedraw").items()]:
        work, _, plans = name.rpartition("/")
        costs.setdefault(work, {})[int(plans)] = nanoseconds / 1e6
    for work, cost in costs.items():
        for plans, milliseconds in sorted(cost.items()):
            row(f"{work} with {plans:,} plans", f"{milliseconds:.4f} ms", f"{milliseconds / 10:.4f} % of a second")
        ratio(f"{work}: 100,000 plans to 10,000", cost[100_000] / cost[10_000], 15)


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
    usage = os.wait4(pid, 0)[2]
    moment, processor = map(float, noted.read_text().split())
    return (moment - began) * 1000, processor * 1000, usage.ru_maxrss / 1024


def start(build, options):
    with tempfile.TemporaryDirectory() as folder, lab.display():
        cases = homes(folder, build)
        for case in cases.values():
            first_frame(*case)              # warms the disk's cache
        runs = [{name: first_frame(*case) for name, case in cases.items()} for _ in range(options.starts)]
    empty = columns(runs, "empty window")
    row("empty window: first frame", f"{empty[0]:.0f} ms")
    row("empty window: processor time until then", f"{empty[1]:.0f} ms")
    row("empty window: peak memory", f"{empty[2]:.1f} MB")
    for name in list(cases)[1:]:
        limits = (1.3, None, 1.3) if name == "Belfry" else (None, None, None)
        for what, own, other, limit in zip(("first frame", "processor time until then", "peak memory"),
                                           columns(runs, name), empty, limits):
            ratio(f"{name}: {what}, to the empty window", own / other, limit)


def columns(runs, name):
    return [statistics.median(column) for column in zip(*(run[name] for run in runs))]


def processor_ms(pid):
    """The processor time that a process has had, with that of its threads that have ended."""
    return time.clock_gettime(~pid << 3 | 2) * 1000     # what clock_getcpuclockid(3) gives


def idle(build, options):
    with tempfile.TemporaryDirectory() as folder, lab.display():
        cases = homes(folder, build)
        running = {name: subprocess.Popen(command, env=environment) for name, (command, environment) in cases.items()}
        time.sleep(5)                       # until all that is done once is done
        before = {name: processor_ms(process.pid) for name, process in running.items()}
        time.sleep(60 * options.minutes)
        used = {name: (processor_ms(process.pid) - before[name]) / options.minutes for name, process in running.items()}
        for process in running.values():
            process.terminate()
            process.wait()
    for name, milliseconds in used.items():
        share = milliseconds / 600          # per cent of a core
        aim = f", below 0.1: {'met' if share < 0.1 else 'MISSED'}" if name.startswith("Belfry") else ""
        row(f"{name}: processor time of an idle minute", f"{milliseconds:.1f} ms", f"{share:.3f} % of a core{aim}")


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__.partition("\n")[0])
    parts = {part.__name__: part for part in (onset, database, start, idle, growth)}
    parser.add_argument("parts", nargs="*", metavar="PART", help=f"of {', '.join(parts)}; all when none is named")
    parser.add_argument("--rings", type=int, default=20, help="rings of each, one a minute (20)")
    parser.add_argument("--starts", type=int, default=21, help="starts of each (21)")
    parser.add_argument("--minutes", type=int, default=1, help="idle minutes (1)")
    parser.add_argument("--build", help="the build folder (build/bench)")
    options = parser.parse_args()
    for part in options.parts or parts:
        if part not in parts:
            parser.error(f"there is no part {part}")
        print(f"\n{part}")
        parts[part](lab.build_folder(options.build), options)
