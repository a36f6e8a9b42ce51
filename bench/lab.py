"""What the benchmarks share: a home of Belfry's own, a sound server of its own, and ears that date what it plays."""
import array, collections, contextlib, os, pathlib, sqlite3, statistics, subprocess, tempfile, threading, time, wave

RATE = 48000        # samples a second, one channel
LOUD = 330          # of 32,767: what counts as a sound
SAME_SOUND = 1.0    # seconds of silence that part two sounds


def quantile(values, share):
    """The value that `share` (0 … 1) of the values do not exceed."""
    return sorted(values)[max(0, min(len(values) - 1, round(share * len(values)) - 1))]


def build_folder(argument=None):
    """The folder of a release build with -DBELFRY_BENCH=ON: the argument's, or build/bench of this project."""
    build = pathlib.Path(argument or pathlib.Path(__file__).parent.parent / "build/bench").resolve()
    if not (build / "bench-plugins").is_dir():
        raise SystemExit(f"{build}: no build with -DBELFRY_BENCH=ON")
    return build


def plan_row(number, begin, content="/srv/sounds/bell.mp3"):
    """A plan that begins at a minute of the day, every day, and ends only with its file."""
    return (f"{number:036d}", f"Plan {number}", f"{begin // 60 % 24:02}:{begin % 60:02}", "", pathlib.Path(content).name,
            str(content), "false", "true", *["true"] * 7)


def make_home(folder, build, plans=()):
    """A home in a new folder whose timetable holds these rows. Returns the environment of a program that lives there."""
    documents = pathlib.Path(folder) / "Documents"
    documents.mkdir(parents=True)
    os.chmod(folder, 0o700)     # as Qt wants the folder for run-time files to be
    with contextlib.closing(sqlite3.connect(build / "resources/data.db")) as template, \
            contextlib.closing(sqlite3.connect(documents / "data.db")) as db, db:
        template.backup(db)
        db.execute("delete from plan")
        db.executemany(f"insert into plan values({','.join('?' * 15)})", plans)
    environment = {**os.environ, "HOME": str(folder), "XDG_CONFIG_HOME": f"{folder}/.config",
                   "XDG_DOCUMENTS_DIR": str(documents), "XDG_RUNTIME_DIR": str(folder),
                   "QT_PLUGIN_PATH": str(build / "bench-plugins"),
                   "DBUS_SESSION_BUS_ADDRESS": "disabled:"}     # where a Belfry may be running, and one is all there is
    return environment


@contextlib.contextmanager
def display():
    """Has every program started inside show its windows on an X display of our own."""
    read, write = os.pipe()
    server = subprocess.Popen(["Xvfb", "-displayfd", str(write), "-screen", "0", "1280x1024x24", "-nolisten", "tcp"],
                              pass_fds=[write], stderr=subprocess.DEVNULL)
    os.close(write)
    with os.fdopen(read) as number:
        os.environ["DISPLAY"] = ":" + number.readline().strip()
    os.environ["QT_QPA_PLATFORM"] = "xcb"
    try:
        yield
    finally:
        server.terminate()
        server.wait()


def tone(path, seconds=2.0, hertz=440):
    """A WAV file of a square tone: its first sample is as loud as any."""
    half = RATE // hertz // 2
    period = array.array("h", [12000] * half + [-12000] * half)
    with wave.open(str(path), "wb") as file:
        file.setnchannels(1), file.setsampwidth(2), file.setframerate(RATE)
        file.writeframes((period * int(seconds * RATE / len(period))).tobytes())
    return path


class SoundServer:
    """PulseAudio with no hardware, and a null sink for each name; `address` is for PULSE_SERVER."""

    def __init__(self, sinks):
        self.folder = tempfile.TemporaryDirectory()
        socket = f"{self.folder.name}/socket"
        self.address = f"unix:{socket}"
        self.environment = {**os.environ, "HOME": self.folder.name, "XDG_RUNTIME_DIR": self.folder.name,
                            "XDG_CONFIG_HOME": self.folder.name, "PULSE_SERVER": self.address}
        modules = [f"module-native-protocol-unix auth-anonymous=1 socket={socket}"]
        modules += [f"module-null-sink sink_name={sink} rate={RATE} channels=2 norewinds=1" for sink in sinks]
        self.daemon = subprocess.Popen(["pulseaudio", "-n", "--daemonize=no", "--use-pid-file=no", "--exit-idle-time=-1",
                                        "--high-priority=no", "--realtime=no", "--log-level=error",
                                        *[part for module in modules for part in ("-L", module)]], env=self.environment)
        while not os.path.exists(socket):
            if self.daemon.poll() is not None:
                raise SystemExit("The sound server did not start.")
            time.sleep(0.05)
        os.chmod(self.folder.name, 0o755)       # so that a ringer may run as another user
        self.ears = {sink: Ear(self, sink) for sink in sinks}

    def __enter__(self):
        return self

    def __exit__(self, *_):
        for process in [*(ear.recorder for ear in self.ears.values()), self.daemon]:
            process.terminate()
            process.wait()
        self.folder.cleanup()


class Ear:
    """Records a sink's monitor, without a break: `onsets` are the moments of wall-clock time at which sounds began."""

    def __init__(self, server, sink):
        self.onsets = []
        self.recorder = subprocess.Popen(["parec", "--raw", f"--device={sink}.monitor", "--format=s16le", f"--rate={RATE}",
                                          "--channels=1", "--latency-msec=10"],
                                         env=server.environment, stdout=subprocess.PIPE)
        threading.Thread(target=self.listen, daemon=True).start()

    def listen(self):
        # The promptest arrival of the last ten seconds tells best when the samples were played.
        arrivals = collections.deque()
        heard, loud_until = 0, -SAME_SOUND
        while chunk := os.read(self.recorder.stdout.fileno(), 1 << 16):
            samples = array.array("h", chunk[:len(chunk) // 2 * 2])
            began, heard = heard, heard + len(samples) / RATE
            arrivals.append((time.time(), time.time() - heard))
            while arrivals[0][0] < arrivals[-1][0] - 10:
                arrivals.popleft()
            if max(samples, default=0) < LOUD:
                continue
            first = next(i for i, sample in enumerate(samples) if sample >= LOUD)
            if began + first / RATE - loud_until > SAME_SOUND:
                self.onsets.append(min(start for _, start in arrivals) + began + first / RATE)
            loud_until = heard


def lateness(onsets, second=0):
    """How many ms after that second of its minute each onset was; up to half a minute early is negative."""
    return [((onset - second + 30) % 60 - 30) * 1000 for onset in onsets]


def in_words(values, unit="ms"):
    return (f"median {statistics.median(values):.1f} {unit}, 99 % {quantile(values, 0.99):.1f} {unit}, "
            f"worst {max(values):.1f} {unit}, spread {max(values) - min(values):.1f} {unit}")
