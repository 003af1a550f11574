"""What the report says about the machine, and about the weight of the libraries."""
import os
import platform
import re
import shutil
import subprocess
import tempfile

PEERS = ("libisal2", "libdeflate0", "zlib1g", "libssl3", "libglib2.0-0", "libapr1", "libboost-dev",
         "libinih1", "rapidjson-dev")


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def first_match(pattern, text):
    found = re.search(pattern, text, re.MULTILINE)
    return found.group(1).strip().strip('"') if found else "unknown"


def describe_machine():
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        info = file.read()
    with open("/etc/os-release", encoding="utf-8") as file:
        system = first_match(r"^PRETTY_NAME=(.*)$", file.read())
    cpu = first_match(r"^model name\s*:(.*)$", info)
    cores = f"{os.cpu_count()} cores{' (virtual)' if 'hypervisor' in info else ''}"
    compiler = output("c++", "-dumpfullversion").strip()
    return f"{cpu}, {cores}, {platform.machine()}, {system}, GCC {compiler}"


def peer_versions():
    found = []
    for package in PEERS:
        run = subprocess.run(["dpkg-query", "-W", "-f", "${Version}", package],
                             capture_output=True, text=True, check=False)
        if run.returncode == 0:
            found.append(f"{package} {run.stdout.strip()}")
    return ", ".join(found)


def library_behind(program, name):
    return os.path.realpath(first_match(rf"{re.escape(name)}\S* => (\S+)", output("ldd", program)))


def weigh(library):
    """Stripped size in bytes, relocations that the loader works through, libraries needed."""
    with tempfile.TemporaryDirectory() as directory:
        copy = os.path.join(directory, "stripped")
        shutil.copy(library, copy)
        subprocess.run(["strip", copy], check=True)
        size = os.path.getsize(copy)
    relocations = sum(map(int, re.findall(r"contains (\d+) entr", output("readelf", "-rW", library))))
    needed = re.findall(r"\(NEEDED\).*\[(.*)\]", output("readelf", "-dW", library))
    return size, relocations, [name for name in needed if not name.startswith("ld-linux")]


def weights(build, rounds=1000):
    """Rows (library, stripped size, relocations, needed, microseconds to load it)."""
    directory = os.path.join(build, "bench")
    programs = {name: os.path.join(directory, f"load_{name}")
                for name in ("nothing", "zt", "glib", "apr")}
    times = output(os.path.join(directory, "zt_bench_load_time"), str(rounds), *programs.values())
    median = {os.path.basename(line.split("\t")[0])[len("load_"):]: float(line.split("\t")[1])
              for line in times.splitlines()}
    return [(name, *weigh(library_behind(programs[key], name)), median[key] - median["nothing"])
            for key, name in (("zt", "libzt_base"), ("glib", "libglib-2.0"), ("apr", "libapr-1"))]


def allocations(build):
    text = output(os.path.join(build, "bench", "zt_bench_allocations"))
    return [line.split("\t") for line in text.splitlines()]
