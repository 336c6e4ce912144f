"""A class of hosts with a printer each: how jobs are spread, and what becomes of them when discs
run out, a host dies or a label cannot be drawn."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import time

import pytest

from scheduler import BUILD, REPOSITORY, wait_for

LABEL = REPOSITORY / "labels/lake.png"
DRAFT = ("-o", "print-quality=3")
BIN_EMPTY = "Disc input bin is empty."


@pytest.fixture(scope="session", autouse=True)
def transcript(running_farm):
    """The session as a text, left in the build folder."""
    yield
    told = "\n".join(running_farm.front.transcript)
    (BUILD / "operations-transcript.txt").write_text(told.strip() + "\n")


@pytest.fixture(autouse=True)
def heading(request, farm):
    farm.front.tell(f"\n# {request.node.originalname.removeprefix('test_').replace('_', ' ')}")


def send_drafts(front, count):
    return [front.send(*DRAFT, LABEL) for _ in range(count)]


def printer_of(front, job):
    """The number of the queue that prints the job, once one does."""
    return wait_for(f"a printer for job {job}",
                    lambda: next((n for n in (1, 2) if front.printing(n) == job), None))


def test_jobs_are_spread(farm):
    jobs = send_drafts(farm.front, 4)
    farm.front.wait_for_jobs(jobs)
    assert [len(host.discs()) for host in farm.hosts] == [2, 2, 0, 0]


def test_copies_of_a_job_stay_together(farm):
    job = farm.front.send(*DRAFT, "-n", "3", LABEL)
    farm.front.wait_for_jobs([job])
    assert sorted(len(host.discs()) for host in farm.hosts) == [0, 0, 0, 3]


def ink(report):
    return tuple(report["discs"][0]["ink_picolitres"][name] for name in
                 ("cyan", "magenta", "yellow"))


def test_options_and_colors_arrive(farm):
    farm.front.make_class(1)
    job = farm.front.send("-o", "PrintQuality=Quality4", "-o", "InnerDiameter=460", "-o",
                          "Bidi=No", REPOSITORY / "labels/concert.pdf")
    farm.front.wait_for_jobs([job])
    report = farm.hosts[0].report(farm.hosts[0].jobs("all")[-1])
    assert (report["discs"][0]["passes"], report["discs"][0]["direction"] in (1, 2)) == (8, True)
    # 46 mm are 1086 dots of a picture of 2834; nothing is printed in the middle.
    assert report["violation_count"] == 0
    job_sent = [line for line in farm.hosts[0].log().splitlines() if "argv[5]" in line][-1]
    assert "InnerDiameter=460" in job_sent and "print-color-mode=color" in job_sent
    assert max(ink(report)) > 1.05 * min(ink(report))


def test_a_raw_queue_prints_in_grey(farm):
    """CUPS gives a queue without a PPD the default of grey, and the front sends that along."""
    front, host = farm.front, farm.hosts[0]
    front.type("lpadmin", "-p", "raw1", "-E", "-v", front.address(host), "-m", "raw")
    job = front.send(*DRAFT, LABEL, to="raw1")
    front.wait_for_jobs([job])
    grey = ink(host.report(host.jobs("all")[-1]))
    assert max(grey) < 1.01 * min(grey)
    job = front.send(*DRAFT, "-o", "print-color-mode=color", LABEL, to="raw1")
    front.wait_for_jobs([job])
    color = ink(host.report(host.jobs("all")[-1]))
    assert max(color) > 1.05 * min(color)
    front.client("lpadmin", "-x", "raw1")


def start_with_an_empty_bin(farm):
    """Four jobs of which one waits for discs at the second printer; that one, and the others."""
    farm.hosts[1].machine(discs=0)
    jobs = send_drafts(farm.front, 4)
    waiting = wait_for("a job at disc2", lambda: farm.front.printing(2))
    farm.front.look_at_host(2, BIN_EMPTY)
    return waiting, [job for job in jobs if job != waiting]


def test_one_printer_runs_out_of_discs(farm):
    front, host = farm.front, farm.hosts[1]
    waiting, others = start_with_an_empty_bin(farm)
    front.wait_for_jobs(others)
    assert front.state(waiting) == "processing"
    assert (len(farm.hosts[0].discs()), len(host.discs())) == (3, 0)
    # Whoever refills the bin needs to do nothing else.
    assert host.order("bin 5") == "ok"
    front.tell("(at the printer of host2: five discs are put in)")
    front.wait_for_jobs([waiting])
    assert (len(farm.hosts[0].discs()), len(host.discs())) == (3, 1)


def test_a_printer_without_discs_is_taken_out(farm):
    front, host = farm.front, farm.hosts[1]
    waiting, others = start_with_an_empty_bin(farm)
    front.type("cupsdisable", "disc2")
    front.wait_for_jobs([waiting, *others])
    assert (len(farm.hosts[0].discs()), len(host.discs())) == (4, 0)
    wait_for("a cancelled job", lambda: list(host.states().values())[-1] == "canceled")
    host.machine(pace="3s")
    front.tell("(the bin of host2 is filled)")
    front.type("cupsenable", "disc2")
    front.wait_for_jobs(send_drafts(front, 2))
    assert (len(farm.hosts[0].discs()), len(host.discs())) == (5, 1)


def test_a_waiting_job_is_moved(farm):
    front, host = farm.front, farm.hosts[1]
    waiting, others = start_with_an_empty_bin(farm)
    front.type("lpmove", f"farm-{waiting}", "disc1")
    # The printer is still in the class: it takes the next job, which waits in turn.
    next_one = wait_for("another job at disc2",
                        lambda: front.printing(2) not in (0, waiting) and front.printing(2))
    assert next_one in others
    front.look_at_host(2, BIN_EMPTY)
    front.wait_for_jobs([waiting, *(job for job in others if job != next_one)])
    assert (len(farm.hosts[0].discs()), len(host.discs())) == (3, 0)
    assert front.state(next_one) == "processing"
    front.type("cancel", next_one)


def test_a_host_is_off_when_a_job_comes(farm):
    front = farm.front
    farm.hosts[1].switch_off()
    front.tell("(host2 is switched off)")
    jobs = send_drafts(front, 3)
    front.wait_for_message(2, "Unable to contact printer, queuing on next printer in class.")
    front.wait_for_jobs(jobs)
    assert len(farm.hosts[0].discs()) == 3
    farm.hosts[1].switch_on()
    assert farm.hosts[1].discs() == []


def die_in_mid_page(farm):
    """Four jobs; host2 is switched off while it prints. Its job, and the others."""
    front, host = farm.front, farm.hosts[1]
    host.machine(pace="10s")
    jobs = send_drafts(front, 4)
    lost = wait_for("a job at disc2", lambda: front.printing(2))
    wait_for("a disc in the making", lambda: "Printing on the virtual printer" in
             host.printer().get("printer-state-message", ""))
    time.sleep(2)
    host.switch_off()
    front.tell("(host2 is switched off)")
    return lost, [job for job in jobs if job != lost]


def test_a_host_dies_in_mid_page_and_comes_back(farm):
    front, host = farm.front, farm.hosts[1]
    lost, others = die_in_mid_page(farm)
    front.wait_for_jobs(others)
    assert len(farm.hosts[0].discs()) == 3
    assert front.state(lost) == "processing"
    for path in host.out.iterdir():  # what the dead host has left of its disc
        path.unlink()
    host.switch_on()
    front.tell("(host2 is switched on)")
    front.wait_for_jobs([lost])
    assert host.discs() == [f"job-{host.jobs('all')[-1]}-disc-001.png"]


def test_a_host_dies_in_mid_page_and_is_taken_out(farm):
    front, host = farm.front, farm.hosts[1]
    lost, others = die_in_mid_page(farm)
    front.type("cupsdisable", "disc2")
    front.wait_for_jobs([lost, *others])
    assert len(farm.hosts[0].discs()) == 4
    # Its own list still has the job: the label comes out twice.
    for path in host.out.iterdir():
        path.unlink()
    host.switch_on()
    front.tell("(host2 is switched on)")
    wait_for("a second disc", lambda: list(host.states().values())[-1] == "completed", 60)
    assert len(host.discs()) == 1


def test_a_taken_out_host_forgets_its_jobs_when_told(farm):
    front, host = farm.front, farm.hosts[1]
    lost, others = die_in_mid_page(farm)
    front.type("cupsdisable", "disc2")
    for path in host.out.iterdir():
        path.unlink()
    host.empty_the_bin()
    host.switch_on()
    host.client("cancel", "-a", "discs")
    front.tell("(host2 is switched on, and at once)\nhost2$ cancel -a discs")
    front.wait_for_jobs([lost, *others])
    wait_for("a cancelled job", lambda: list(host.states().values())[-1] == "canceled", 60)
    assert (len(farm.hosts[0].discs()), host.discs()) == (4, [])


def test_a_job_of_a_forgetful_host_is_lost(farm):
    """As the distribution sets it up, a scheduler writes its list of jobs every 30 seconds."""
    front, host = farm.front, farm.hosts[1]
    host.switch_off()
    host.setting("DirtyCleanInterval", 30)
    host.switch_on()
    lost, others = die_in_mid_page(farm)
    front.wait_for_jobs(others)
    assert front.state(lost) == "processing"
    for path in host.out.iterdir():
        path.unlink()
    host.switch_on()
    front.tell("(host2 is switched on)")
    front.wait_for_jobs([lost])
    assert host.discs() == [] and len(farm.hosts[0].discs()) == 3
    host.switch_off()
    host.setting("DirtyCleanInterval", 0)


def test_a_damaged_label_holds_its_printer_until_it_is_cancelled(farm):
    front = farm.front
    broken = front.root / "broken.pdf"
    broken.write_bytes(b"%PDF-1.4\n" + bytes(range(256)) * 40)
    bad = front.send(broken)
    where = printer_of(front, bad)
    jobs = send_drafts(front, 2)
    front.wait_for_jobs(jobs)
    assert front.state(bad) == "processing" and front.printing(where) == bad
    assert "cups-remote-stopped" in front.client("lpstat", "-l", "-p", f"disc{where}")
    front.type("cancel", bad)
    front.wait_for_jobs([bad], "canceled")
    wait_for("a free printer", lambda: not front.printing(where))
    front.wait_for_jobs(send_drafts(front, 2))
    assert [len(host.discs()) for host in farm.hosts[:2]] in ([2, 2], [3, 1], [1, 3])
