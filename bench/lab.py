"""What the benchmarks share: homes, displays and sound servers of their own, recorders that date what is played, and
a line about the machine."""
import array, collections, contextlib, os, pathlib, platform, re, sqlite3, statistics, subprocess, tempfile, threading
import time, wave

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
def display(kind):
    """Has every program started inside show its windows on a display of our own, "X11" or "Wayland"."""
    with tempfile.TemporaryDirectory() as folder:
        if kind == "X11":
            read, write = os.pipe()
            server = subprocess.Popen(["Xvfb", "-displayfd", str(write), "-screen", "0", "1280x1024x24", "-nolisten",
                                       "tcp"], pass_fds=[write], stderr=subprocess.DEVNULL)
            os.close(write)
            with os.fdopen(read) as number:
                os.environ.update(QT_QPA_PLATFORM="xcb", DISPLAY=":" + number.readline().strip())
        else:
            server = subprocess.Popen(["weston", "--backend=headless-backend.so", "--no-config", "--socket=display",
                                       "--width=1280", "--height=1024", "--idle-time=0"],
                                      env={**os.environ, "XDG_RUNTIME_DIR": folder}, stdout=subprocess.DEVNULL,
                                      stderr=subprocess.DEVNULL)
            wait_for(f"{folder}/display", server)
            os.environ.update(QT_QPA_PLATFORM="wayland", WAYLAND_DISPLAY=f"{folder}/display")
        try:
            yield
        finally:
            server.terminate()
            server.wait()


def wait_for(socket, server):
    """Waits until the server listens there."""
    while not os.path.exists(socket):
        if server.poll() is not None:
            raise SystemExit(f"{server.args[0]} did not start.")
        time.sleep(0.05)


def tone(path, seconds=2.0, hertz=440):
    """A WAV file of a square tone: its first sample is as loud as any."""
    half = RATE // hertz // 2
    period = array.array("h", [12000] * half + [-12000] * half)
    with wave.open(str(path), "wb") as file:
        file.setnchannels(1), file.setsampwidth(2), file.setframerate(RATE)
        file.writeframes((period * int(seconds * RATE / len(period))).tobytes())
    return path


# Keeps PipeWire's session manager (0.4 and 0.5) from real devices and from the desktop.
WIREPLUMBER = {
    "main.lua.d/60-none.lua": """alsa_monitor.enabled = false v4l2_monitor.enabled = false
        libcamera_monitor.enabled = false default_access.properties["enable-flatpak-portal"] = false""",
    "bluetooth.lua.d/60-none.lua": "bluez_monitor.enabled = false",
    "wireplumber.conf.d/none.conf": """wireplumber.profiles = { main = {
        hardware.audio = disabled hardware.bluetooth = disabled hardware.video-capture = disabled
        support.portal-permissionstore = disabled } }"""}


class SoundServer:
    """PulseAudio or PipeWire with no hardware, and a null sink for each name; `address` is for PULSE_SERVER."""

    def __init__(self, kind, sinks):
        self.folder = tempfile.TemporaryDirectory()
        folder = self.folder.name
        socket = f"{folder}/pulse/native"
        self.address = f"unix:{socket}"
        self.environment = {**os.environ, "PULSE_SERVER": self.address, "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent",
                            **dict.fromkeys(["HOME", "XDG_RUNTIME_DIR", "XDG_CONFIG_HOME", "XDG_STATE_HOME"], folder)}
        self.daemons = []
        modules = [f"module-null-sink sink_name={sink} rate={RATE} channels=2" for sink in sinks]
        self.start_pulseaudio(socket, modules) if kind == "PulseAudio" else self.start_pipewire(folder, modules)
        wait_for(socket, self.daemons[-1])
        os.chmod(folder, 0o755)                 # so that a player may run as another user
        os.chmod(f"{folder}/pulse", 0o755)
        self.recorders = {sink: Recorder(self, sink) for sink in sinks}

    def run(self, *command):
        self.daemons.append(subprocess.Popen(command, env=self.environment, stderr=subprocess.DEVNULL))

    def start_pulseaudio(self, socket, modules):
        os.mkdir(os.path.dirname(socket))
        loads = [f"module-native-protocol-unix auth-anonymous=1 socket={socket}", *(f"{each} norewinds=1" for each in modules)]
        self.run("pulseaudio", "-n", "--daemonize=no", "--use-pid-file=no", "--exit-idle-time=-1", "--high-priority=no",
                 "--realtime=no", "--log-level=error", *[part for module in loads for part in ("-L", module)])

    def start_pipewire(self, folder, modules):
        loads = " ".join(f'{{ cmd = load-module, args = "{module}" }}' for module in modules)
        texts = {"pipewire/pipewire-pulse.conf.d/sinks.conf": f"pulse.cmd = [ {loads} ]",
                 **{f"wireplumber/{name}": text for name, text in WIREPLUMBER.items()}}
        for name, text in texts.items():
            path = pathlib.Path(folder, name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text)
        self.run("pipewire")
        wait_for(f"{folder}/pipewire-0", self.daemons[0])
        self.run("wireplumber")
        self.run("pipewire-pulse")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        for process in [*(each.process for each in self.recorders.values()), *reversed(self.daemons)]:
            process.terminate()
            process.wait()
        self.folder.cleanup()


class Recorder:
    """Records a sink's monitor, without a break: `onsets` are the moments of wall-clock time at which sounds began."""

    def __init__(self, server, sink):
        self.onsets = []
        self.process = subprocess.Popen(["parec", "--raw", f"--device={sink}.monitor", "--format=s16le", f"--rate={RATE}",
                                         "--channels=1", "--latency-msec=10"],
                                        env=server.environment, stdout=subprocess.PIPE)
        threading.Thread(target=self.listen, daemon=True).start()

    def listen(self):
        # The promptest arrival of the last ten seconds tells best when the samples were played.
        arrivals = collections.deque()
        heard, loud_until = 0, -SAME_SOUND
        while chunk := os.read(self.process.stdout.fileno(), 1 << 16):
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


# ---- the machine

def version(*command):
    """The first version number in what a command prints."""
    said = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True).stdout
    found = re.search(r"\d+(\.\d+)+", said)
    return found.group() if found else "?"


def machine():
    """What the figures depend on, in a line."""
    model = re.search(r"model name\s*: (.*)", pathlib.Path("/proc/cpuinfo").read_text())
    versions = {"Qt": ["qtpaths6", "--qt-version"], "PulseAudio": ["pulseaudio", "--version"],
                "PipeWire": ["pipewire", "--version"], "Xvfb": ["dpkg-query", "--show", "xvfb"],
                "Weston": ["weston", "--version"]}
    return ", ".join([model.group(1) if model else platform.machine(),
                      f"{len(os.sched_getaffinity(0))} of {os.cpu_count()} cores",
                      platform.freedesktop_os_release()["PRETTY_NAME"], f"Linux {platform.release()}",
                      *(f"{name} {version(*command)}" for name, command in versions.items())])
