"""Several machines on one: hosts with a printer each, and a front host whose queues lead to them.

Every host is a private scheduler in a process name space of its own, so that switching it off ends
all of it at once, as a power cut does. They meet on the loopback address.
"""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import re
import socket
from pathlib import Path

from scheduler import QUEUE, REPOSITORY, Scheduler, wait_for

CLASS = "farm"
# What the front host's PPD has in the filter's place: any document is handed on as it is.
HANDED_ON = '*cupsFilter: "*/* 0 -"'


class Host(Scheduler):
    """A host with the driver and a printer."""
    NAME_SPACES = ("--unshare-pid", "--proc", "/proc")
    SETTINGS = "DirtyCleanInterval 0\n"

    def switch_off(self):
        self._cupsd.kill()
        self._cupsd.wait()
        # The system ends the others of the name space in its own time.
        wait_for("a host that is off", lambda: not self._answers())

    def _answers(self):
        with socket.socket() as trial:
            return trial.connect_ex(("127.0.0.1", self.port)) == 0

    def switch_on(self):
        self._start()

    def empty_the_bin(self):
        """Of a host that is off: its printer has no discs when it starts."""
        queues = self.root / "etc/printers.conf"
        queues.write_text(queues.read_text().replace("?control", "?discs=0&control"))

    def discs(self):
        """Names of the pictures of all discs, in the order of their jobs."""
        found = [re.fullmatch(r"job-(\d+)-disc-(\d+)\.png", path.name)
                 for path in self.out.iterdir()]
        return [name[0] for name in sorted(filter(None, found),
                                           key=lambda name: (int(name[1]), int(name[2])))]

    def states(self):
        """The state of each job that the host knows."""
        return {job: self.job(job)["job-state"] for job in self.jobs("all")}

    def processor_seconds(self):
        """Processor time of the scheduler and of all that it has started and seen end."""
        parents = {}
        for entry in filter(str.isdigit, os.listdir("/proc")):
            try:
                parents[int(entry)] = Path(f"/proc/{entry}/stat").read_text().rsplit(")", 1)[1]
            except (FileNotFoundError, ProcessLookupError):
                continue
        family = {self._cupsd.pid}
        for _ in range(3):
            family |= {pid for pid, fields in parents.items() if int(fields.split()[1]) in family}
        ticks = max(sum(map(int, parents[pid].split()[11:15])) for pid in family if pid in parents)
        return ticks / os.sysconf("SC_CLK_TCK")

    def setting(self, name, value):
        """Changes one line of cupsd.conf; it counts from the next start."""
        conf = self.root / "etc/cupsd.conf"
        text = re.sub(rf"^{name} .*$", f"{name} {value}", conf.read_text(), flags=re.M)
        conf.write_text(text)


class Front(Scheduler):
    """A host without a printer; what is typed there goes into the transcript."""
    BACKENDS = ("ipp",)

    def __init__(self, hosts):
        self.hosts = hosts
        super().__init__()

    def _add_queue(self):
        self.front_ppd = self.root / "front.ppd"
        with open(self.ppd, encoding="utf-8") as ppd:
            self.front_ppd.write_text(re.sub(r"^\*cupsFilter: .*$", HANDED_ON, ppd.read(),
                                             flags=re.M))
        for number, host in enumerate(self.hosts, 1):
            self.client("lpadmin", "-p", f"disc{number}", "-E", "-v", self.address(host), "-P",
                        str(self.front_ppd))

    @staticmethod
    def address(host):
        return f"ipp://127.0.0.1:{host.port}/printers/{QUEUE}"

    def make_class(self, count, name=CLASS):
        """A class of the first `count` printers."""
        self.client("lpadmin", "-x", name, check=False)
        for number in range(1, count + 1):
            self.client("lpadmin", "-p", f"disc{number}", "-c", name)
        self.client("cupsenable", name)
        self.client("cupsaccept", name)

    def type(self, *words):
        """Runs a command as an administrator types it; what it says."""
        said = self.client(*map(str, words))
        self.tell(f"$ {' '.join(map(str, words))}".replace(str(REPOSITORY) + "/", ""))
        if said.strip():
            self.tell(said.strip())
        return said

    def send(self, *words, to=CLASS):
        """Sends a job of one disc; its number."""
        said = self.type("lp", "-d", to, *words)
        return int(re.search(r"request id is [\w-]+-(\d+)", said)[1])

    def printing(self, number):
        """The job that the queue disc<number> is printing, or 0."""
        found = re.search(rf"now printing disc{number}-(\d+)\.",
                          self.client("lpstat", "-p", f"disc{number}"))
        return int(found[1]) if found else 0

    def message(self, number):
        said = self.client("lpstat", "-l", "-p", f"disc{number}").splitlines()
        return said[1].strip() if len(said) > 1 else ""

    def wait_for_message(self, number, wanted):
        """Waits until the queue disc<number> shows a message that begins so."""
        wait_for(f"{wanted} of disc{number}: {self.message(number)}",
                 lambda: self.message(number).startswith(wanted))
        self.tell(f"$ lpstat -l -p disc{number}\n\t{self.message(number)}")

    def look_at_host(self, number, wanted):
        """What the host's own queue says of its printer, once it begins so."""
        host = self.hosts[number - 1]
        host.wait_for_message(wanted)
        self.tell(f"$ lpstat -h host{number} -l -p {QUEUE}\n\t"
                  + host.printer()["printer-state-message"])

    def state(self, job):
        return self.job(job)["job-state"]

    def wait_for_jobs(self, jobs, state="completed", seconds=120):
        for job in jobs:
            wait_for(f"job {job} {state}, not {self.state(job)}",
                     lambda number=job: self.state(number) == state, seconds)
        self.tell(f"({'job' if len(jobs) == 1 else 'jobs'} {', '.join(map(str, jobs))} "
                  f"{'is' if len(jobs) == 1 else 'are'} {state})")

    def tell(self, line):
        for number, host in enumerate(self.hosts, 1):
            line = line.replace(f"127.0.0.1:{host.port}", f"host{number}")
        super().tell(line)


class Farm:
    def __init__(self, count):
        self.hosts = [Host() for _ in range(count)]
        self.front = Front(self.hosts)

    def stop(self):
        for machine in (self.front, *self.hosts):
            machine.stop()

    def discs(self):
        return sum(len(host.discs()) for host in self.hosts)

    def tidy(self):
        """All printers ready and idle, no jobs, no discs, a class of the first two."""
        self.front.client("cancel", "-a", check=False)
        for number, host in enumerate(self.hosts, 1):
            if host._cupsd.poll() is not None:  # pylint: disable=protected-access
                host.switch_on()
            host.client("cancel", "-a", check=False)
            self.front.client("cupsenable", f"disc{number}")
        for host in self.hosts:
            wait_for("an idle printer", lambda h=host: h.printer()["printer-state"] == "idle", 60)
            for path in host.out.iterdir():
                path.unlink()
            host.machine(pace="3s")
        for number in range(1, len(self.hosts) + 1):
            wait_for("an idle queue", lambda n=number: not self.front.printing(n), 60)
        self.front.make_class(2)
