"""Runs commands to their end, some at a time, and tells what they took: time, processor time, memory."""

import concurrent.futures
import dataclasses
import os
import subprocess
import threading
import time


@dataclasses.dataclass(frozen=True)
class Command:
    words: list
    directory: str | None = None
    output: str | None = None  # file that takes standard output; without it the text is kept


@dataclasses.dataclass
class Cost:
    wall: float = 0.0  # seconds from the start of the first to the end of the last
    processor: float = 0.0  # seconds, user and system, of all processes
    peak: int = 0  # bytes resident in the largest single process; the runner's own, some 20 MB, is the least
    failures: list = dataclasses.field(default_factory=list)  # what failing commands said last
    texts: list = dataclasses.field(default_factory=list)


def run(command, seconds):
    """Returns the rusage of the command and of all that it started and waited for, its exit code and its texts."""
    with open(command.output or os.devnull, "wb") as file:
        process = subprocess.Popen(
            command.words, cwd=command.directory, stdin=subprocess.DEVNULL, stderr=subprocess.PIPE,
            stdout=file if command.output else subprocess.PIPE,
        )
        timer = threading.Timer(seconds, process.kill)
        timer.start()
        trouble = []
        reader = threading.Thread(target=lambda: trouble.append(process.stderr.read()))
        reader.start()
        text = b"" if command.output else process.stdout.read()
        reader.join()
        _, status, usage = os.wait4(process.pid, 0)
        timer.cancel()
        process.returncode = os.waitstatus_to_exitcode(status)  # so that nobody waits for it again
    return usage, process.returncode, text.decode(errors="replace"), trouble[0].decode(errors="replace")


def measure(commands, jobs, seconds=900):
    """Runs all commands, `jobs` at a time; each is ended after `seconds`. A failing one does not stop the others."""
    cost = Cost()
    start = time.perf_counter()
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        for command, (usage, code, text, trouble) in zip(
            commands, pool.map(lambda command: run(command, seconds), commands)
        ):
            cost.processor += usage.ru_utime + usage.ru_stime
            cost.peak = max(cost.peak, usage.ru_maxrss * 1024)
            cost.texts.append(text)
            if code != 0:
                last = trouble.strip().splitlines()[-1:] or [f"exit code {code}"]
                cost.failures.append(f"{os.path.basename(command.words[0])}: {last[0]}")
    cost.wall = time.perf_counter() - start
    return cost
