"""Where and of what something was measured: for pages that are written by programs. Names no host and no path."""
import datetime
import os
import platform
import re
import subprocess
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
# What the program is made of; a change elsewhere leaves what was measured true.
SOURCES = ("CMakeLists.txt", "cmake", "Desktop", "Imaging", "Interface", "Media", "Resources", "Stillwick", "Training",
           "Vision")


def git(*arguments):
    done = subprocess.run(["git", *arguments], cwd=ROOT, capture_output=True, text=True)
    return done.stdout.strip() if done.returncode == 0 else ""


def commit():
    """The last commit that changed the program, and whether it was changed since."""
    there = [source for source in SOURCES if (ROOT / source).exists()]
    name = git("log", "-1", "--format=%h", "--abbrev=7", "--", *there) or "unknown"
    return name + (" with changes" if git("status", "--porcelain", "--", *there) else "")


def today():
    return datetime.datetime.now(datetime.timezone.utc).date().isoformat()


def read(path):
    try:
        return Path(path).read_text(errors="replace")
    except OSError:
        return ""


def machine():
    """The processor, its cores, the memory, the kernel and the system, as one line."""
    model = re.search(r"^model name\s*:\s*(.+)$", read("/proc/cpuinfo"), re.M)
    memory = re.search(r"^MemTotal:\s*(\d+)", read("/proc/meminfo"), re.M)
    system = re.search(r'^PRETTY_NAME="?([^"\n]+)', read("/etc/os-release"), re.M)
    cores = len(os.sched_getaffinity(0))
    parts = [
        " ".join((model[1] if model else platform.machine()).split()),
        f"{cores} core{'' if cores == 1 else 's'}",
        f"{int(memory[1]) / 2**20:.1f} GiB" if memory else "memory unknown",
        # What follows the first word of a kernel's release may name who made it for whom.
        f"Linux {re.match(r'[0-9.]*', platform.release())[0]}",
        system[1] if system else "system unknown",
    ]
    return ", ".join(parts)


def version(*command):
    """The first number with a dot in what a program says of itself."""
    try:
        said = subprocess.run(command, capture_output=True, text=True).stdout
    except OSError:
        said = ""
    found = re.search(r"\d+(\.\d+)+", said)
    return found[0] if found else "of unknown version"
