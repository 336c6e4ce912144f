"""A CUPS scheduler of our own: cupsd in a mount name space, with the filter, the PPD and the
backend installed as on a machine, and the clients' view of its queue.

cupsd runs as root and its filters and backends as lp, as everywhere. All folders that either writes
to are private ones, mounted over the machine's.
"""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import contextlib
import json
import os
import re
import shutil
import socket
import stat
import subprocess
import tempfile
import time
from pathlib import Path

import sandbox

REPOSITORY = Path(__file__).resolve().parents[2]
BUILD = Path(os.environ.get("ZR7700_BUILD", REPOSITORY / "build-release"))
FILTER = sandbox.filter_path(BUILD)
BEFORE_FILTER = ("rastertodisc", "pdftodisc", "picturetodisc", "texttodisc")
QUEUE = "discs"
USER = "lp"

# Private folders, and what they are mounted over.
_MOUNTS = {"etc": "/etc/cups", "spool": "/var/spool/cups", "cache": "/var/cache/cups",
           "run": "/run/cups", "logs": "/var/log/cups", "Library": "/Library", "Users": "/Users",
           "var-tmp": "/var/tmp", "shm": "/dev/shm"}

_CUPSD_CONF = """LogLevel debug
LogTimeFormat usecs
MaxLogSize 0
Listen {socket}
Listen 127.0.0.1:{port}
Browsing Off
DefaultAuthType None
JobRetryInterval 1
MultipleOperationTimeout 10
<Location />
  Order allow,deny
  Allow all
</Location>
<Location /admin>
  Order allow,deny
  Allow all
</Location>
<Policy default>
  JobPrivateAccess all
  JobPrivateValues none
  SubscriptionPrivateAccess all
  SubscriptionPrivateValues none
  <Limit All>
    Order allow,deny
    Allow all
  </Limit>
</Policy>
"""

_CUPS_FILES_CONF = """SystemGroup root
User lp
Group lp
ServerBin {bin}
ServerRoot /etc/cups
RequestRoot /var/spool/cups
TempDir /var/spool/cups/tmp
CacheDir /var/cache/cups
StateDir /run/cups
AccessLog /var/log/cups/access_log
ErrorLog /var/log/cups/error_log
PageLog /var/log/cups/page_log
"""


def wait_for(what, happened, seconds=30):
    """What happened() gives as soon as it is true; fails when it has not become so in time."""
    deadline = time.monotonic() + seconds
    while True:
        result = happened()
        if result:
            return result
        if time.monotonic() > deadline:
            raise AssertionError(f"not in {seconds} s: {what}")
        time.sleep(0.05)


def _machine():
    """The machine's root in pieces, so that none of the places of _MOUNTS is made on it."""
    out = []
    for entry in Path("/").iterdir():
        if entry.is_symlink():
            out += ["--symlink", os.readlink(entry), str(entry)]
        elif entry.is_dir() and str(entry) not in _MOUNTS.values():
            out += ["--dev-bind", str(entry), str(entry)]
    return out


def _free_port():
    with socket.socket() as trial:
        trial.bind(("127.0.0.1", 0))
        return trial.getsockname()[1]


class Scheduler:
    # For kinds of machines: more of cupsd.conf, more for bubblewrap, backends of the distribution.
    SETTINGS = ""
    NAME_SPACES = ()
    BACKENDS = ()

    def __init__(self):
        sandbox.require()
        if os.getuid() != 0:
            raise RuntimeError("A scheduler that runs its filters as lp needs root.")
        self.root = Path(tempfile.mkdtemp(prefix="zr7700-cups-", dir="/tmp"))
        self.root.chmod(0o755)
        self.ppd = str(BUILD / "ppd/zr7700.ppd")
        self.port = _free_port()
        self.transcript = []  # what was done and seen, as a person would type and read it
        self._install()
        self._start()
        self._add_queue()

    # What an administrator does once.

    def folder(self, name, owner="root", mode=0o755):
        folder = self.root / name
        folder.mkdir(parents=True, exist_ok=True)
        shutil.chown(folder, owner)
        folder.chmod(mode)
        return folder

    def _install(self):
        for name in ("etc/ppd", "etc/ssl", "spool", "cache", "run", "logs"):
            self.folder(name)
        shutil.chown(self.folder("spool/tmp", mode=0o1770), "root", USER)
        shutil.chown(self.folder("cache/rss", mode=0o775), "root", USER)
        self.folder("shm", mode=0o1777)
        self.folder("var-tmp", mode=0o1777)
        self.folder("var-tmp/tessary", USER)
        self.out = self.folder("out", USER)
        self._install_engine()
        self._install_programs()
        # The scheduler reads MIME files beside its configuration as well as among its data.
        for name in ("zr7700.types", "zr7700.convs"):
            shutil.copyfile(REPOSITORY / "mime" / name, self.root / "etc" / name)
        settings = {"socket": self.root / "run/cups.sock", "port": self.port,
                    "bin": self.root / "bin"}
        (self.root / "etc/cupsd.conf").write_text(
            _CUPSD_CONF.format(**settings) + self.SETTINGS)
        (self.root / "etc/cups-files.conf").write_text(_CUPS_FILES_CONF.format(**settings))

    def _install_engine(self):
        """The engine belongs to root; the log's folder and the ini files' are the filter's."""
        for folder in (sandbox.LIBRARIES, sandbox.ENGINE_DATA):
            shutil.copytree(BUILD / "root" / folder, self.root / folder)
        self.folder("Library/Caches", USER)
        self.folder(sandbox.ENGINE_DATA, USER)

    def _install_programs(self):
        """The distribution's programs as links, ours as files that root owns."""
        for kind in ("filter", "backend", "daemon", "notifier", "monitor", "cgi-bin"):
            folder = self.folder("bin/" + kind)
            theirs = Path("/usr/lib/cups") / kind
            for program in theirs.iterdir() if theirs.exists() else ():
                if kind != "backend" or program.name in self.BACKENDS:
                    (folder / program.name).symlink_to(program)
        ours = [(BUILD / name, f"filter/{name}") for name in BEFORE_FILTER]
        for program, place in (*ours, (FILTER, "filter/rastertoZR7700"),
                               (BUILD / "zr7700virtual", "backend/zr7700virtual")):
            shutil.copyfile(program, self.root / "bin" / place)
            (self.root / "bin" / place).chmod(0o755)

    def _start(self):
        command = ["bwrap", "--die-with-parent", *_machine(), *self.NAME_SPACES]
        for private, place in _MOUNTS.items():
            command += ["--bind", str(self.root / private), place]
        command += ["/usr/sbin/cupsd", "-f", "-c", "/etc/cups/cupsd.conf", "-s",
                    "/etc/cups/cups-files.conf"]
        with open(self.root / "cupsd.output", "wb") as output:
            self._cupsd = subprocess.Popen(command, stdout=output, stderr=output,
                                           stdin=subprocess.DEVNULL)
        wait_for("a scheduler that answers", lambda: self.client("lpstat", "-r", check=False)
                 .startswith("scheduler is running"))

    def _add_queue(self):
        self.client("lpadmin", "-p", QUEUE, "-E", "-v", self.uri(), "-P",
                     self.ppd, "-o", "printer-error-policy=abort-job")

    def stop(self):
        self.client("cancel", "-a", check=False)
        self._cupsd.terminate()
        try:
            self._cupsd.wait(20)
        except subprocess.TimeoutExpired:
            self._cupsd.kill()
            self._cupsd.wait()
        if "ZR7700_KEEP" not in os.environ:
            shutil.rmtree(self.root, ignore_errors=True)

    # What a person does, and sees.

    def client(self, name, *words, check=True):
        done = subprocess.run([name, "-h", str(self.root / "run/cups.sock"), *words],
                              capture_output=True, text=True, check=False, timeout=60,
                              env={"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL": "C.UTF-8"})
        if check and done.returncode != 0:
            raise AssertionError(f"{name} {words}: {done.stderr}")
        return done.stdout

    def tell(self, line):
        line = line.replace(str(self.root), "/tmp/cups").replace(f"{REPOSITORY}/", "")
        self.transcript.append(line)

    def uri(self, **parameters):
        text = "&".join(f"{name}={value}" for name, value in parameters.items())
        return f"zr7700virtual:{self.root / 'out'}?control={self.root / 'out/control'}" + (
            f"&{text}" if text else "")

    def machine(self, script="", **parameters):
        """The printer that the next job meets: parameters of its URI, and a fault script."""
        if script:
            (self.root / "out/script").write_text(script)
            parameters["script"] = self.root / "out/script"
        self.client("lpadmin", "-p", QUEUE, "-v", self.uri(**parameters))
        shown = "&".join(f"{name}={value}" for name, value in parameters.items())
        shown = f"?{shown}" if shown else ""
        self.tell(f"$ lpadmin -p {QUEUE} -v 'zr7700virtual:/tmp/cups/out{shown}'"
                  + "".join(f"\n  script: {order}" for order in script.splitlines()))

    def order(self, text):
        """Tells the running machine to do something; its answer."""
        with socket.socket(socket.AF_UNIX) as line:
            line.settimeout(10)
            line.connect(str(self.root / "out/control"))
            line.sendall(text.encode() + b"\n")
            answer = line.makefile().readline().strip()
        self.tell(f"(at the printer: {text})")
        return answer

    def print(self, *words):
        """Sends a job with lp; its number."""
        said = self.client("lp", "-d", QUEUE, *map(str, words))
        self.tell(f"$ lp -d {QUEUE} {' '.join(map(str, words))}\n{said.strip()}")
        return int(re.search(rf"request id is {QUEUE}-(\d+)", said)[1])

    def cancel(self, job):
        self.client("cancel", str(job))
        self.tell(f"$ cancel {job}")

    def jobs(self, which):
        return [int(number) for number in
                re.findall(rf"^{QUEUE}-(\d+) ", self.client("lpstat", "-W", which, "-o"), re.M)]

    def lpstat(self, wanted=""):
        """What lpstat says of the printer, as soon as it says `wanted`: a message that is repeated
        may be hidden for a moment by another program's."""
        def ask():
            said = self.client("lpstat", "-l", "-p", QUEUE)
            return said if wanted in said else None
        said = wait_for(f"lpstat's {wanted}", ask)
        kept = [line for line in said.splitlines() if re.match(r"printer |\t?[A-Z].*[.!] |.*Alerts|"
                                                               r"\t.*\.$", line)]
        self.tell(re.sub(r" since .*", "", f"$ lpstat -l -p {QUEUE}\n" + "\n".join(kept)))
        return said

    def _ask(self, operation, group, wanted):
        test = f"""{{ OPERATION {operation} GROUP operation-attributes-tag
          ATTR charset attributes-charset utf-8 ATTR naturalLanguage attributes-natural-language en
          ATTR uri {group} ATTR keyword requested-attributes {','.join(wanted)} }}"""
        path = self.root / "question.test"
        path.write_text(test)
        done = subprocess.run(["ipptool", "-tv", f"ipp://127.0.0.1:{self.port}/printers/{QUEUE}",
                               str(path)], capture_output=True, text=True, check=False, timeout=30)
        answer = done.stdout[done.stdout.rindex("status-code"):]
        return {name: value.strip() for name, value in
                re.findall(r"^ +([\w-]+) \([^)]*\) = (.*)$", answer, re.M)}

    def attributes(self, *names):
        """What the queue tells every client of itself."""
        return self._ask("Get-Printer-Attributes", "printer-uri $uri", names)

    def printer(self):
        return self.attributes("printer-state", "printer-state-reasons", "printer-state-message")

    def job(self, number):
        return self._ask("Get-Job-Attributes", f"job-uri ipp://127.0.0.1/jobs/{number}",
                         ["job-state", "job-state-reasons", "job-printer-state-message",
                          "job-printer-state-reasons", "job-impressions-completed"])

    def wait_for_state(self, number, state, seconds=60):
        """The job's attributes once it is in that state."""
        def reached():
            found = self.job(number)
            return found if found.get("job-state") == state else None
        found = wait_for(f"job {number} {state}: {self.job(number)}", reached, seconds)
        self.tell(f"(job {number} is {state})")
        return found

    def wait_for_message(self, text, seconds=30):
        """Waits until the printer shows a message that begins so."""
        wait_for(f"the message {text}: {self.printer()}", lambda: self.printer()
                 .get("printer-state-message", "").startswith(text), seconds)

    def wait_for_reasons(self, wanted, seconds=30):
        """Waits until the printer's state reasons are exactly these (a set)."""
        def same():
            return set(self.printer()["printer-state-reasons"].split(",")) == wanted
        wait_for(f"the reasons {wanted}: {self.printer()}", same, seconds)

    def report(self, number):
        """What the machine reports of a job, once it is written."""
        path = self.root / f"out/job-{number}-report.json"
        wait_for(f"a report of job {number}", path.exists)
        return json.loads(path.read_text())

    # What an administrator finds on the machine.

    def log(self):
        return (self.root / "logs/error_log").read_text(errors="replace")

    def job_log(self, number):
        return "\n".join(line for line in self.log().splitlines() if f"[Job {number}]" in line)

    def processes(self):
        """Command lines of all processes that the scheduler or one of its children has started."""
        parents, commands = {}, {}
        for entry in filter(str.isdigit, os.listdir("/proc")):
            try:
                fields = Path(f"/proc/{entry}/stat").read_text().rsplit(")", 1)[1].split()
                commands[int(entry)] = Path(f"/proc/{entry}/cmdline").read_bytes().decode(
                    errors="replace").replace("\0", " ")
            except (FileNotFoundError, ProcessLookupError):
                continue
            parents[int(entry)] = int(fields[1])
        family, found = {self._cupsd.pid}, []
        for _ in range(8):
            family |= {child for child, parent in parents.items() if parent in family}
        for pid in family:
            if pid in commands and "/usr/sbin/cupsd" not in commands[pid]:
                found.append(commands[pid])
        # Processes that have lost their parent are known by the queue's PPD.
        mark = f"PPD=/etc/cups/ppd/{QUEUE}.ppd".encode()
        for pid in set(commands) - family:
            try:
                if mark in Path(f"/proc/{pid}/environ").read_bytes():
                    found.append(commands[pid])
            except (FileNotFoundError, ProcessLookupError, PermissionError):
                continue
        return found

    def mode(self, path):
        """Owner's name and permission bits of a file below the private root."""
        facts = (self.root / path).stat()
        return (self.root / path).owner(), stat.S_IMODE(facts.st_mode)


@contextlib.contextmanager
def running(kind=Scheduler):
    """A scheduler of that kind, until the end of the block."""
    machine = kind()
    try:
        yield machine
    finally:
        machine.stop()
