#!/usr/bin/env python3
"""morvenqvr-slot at work: slot.py FOLDER-OF-TOOLS CHOSEN-SLOT BACKTRACE-TEST WORK

Exit status 77, and a reason, where the processor cannot fault on CPUID; then only the refusal is tested.
"""
import json
import os
import re
import signal
import subprocess
import sys
import tempfile
from pathlib import Path

tools, chosen, backtrace = (Path(a) for a in sys.argv[1:4])
slot, info = tools / "morvenqvr-slot", tools / "morvenqvr-info"
faults = []


def run(*command, **options):
    return subprocess.run([str(c) for c in command], capture_output=True, text=True, timeout=120, **options)


def expect(what, done, status, error=""):
    if done.returncode != status or not re.search(error, done.stderr):
        faults.append(f"{what}: {done.returncode}, {done.stdout[-300:]}{done.stderr[-300:]}")
    return done


# What needs no processor's help.
expect("an unknown slot", run(slot, "z1", "true"), 125, "no slot of that name: z1")
expect("no command", run(slot, "m7"), 125, "usage")
expect("an unknown option", run(slot, "--none", "m7", "true"), 125, "usage")
expect("help", run(slot, "--help"), 0)
expect("version", run(slot, "--version"), 0)
rows = re.findall(r"^(\w\w) .* (runs here|does not run here)$", expect("the list", run(slot, "--list"), 0).stdout, re.M)
slots = [name for name, _ in rows]
able = [name for name, verdict in rows if verdict == "runs here"]
if slots != ["mx", "m7", "u8", "n8", "y8", "e9", "l9"] or able[:2] != ["mx", "m7"]:
    faults.append(f"the list: {rows}")
# A machine that cannot: the emulator knows no such call.
expect("a processor without faults", run("qemu-x86_64", "-cpu", "max", slot, "mx", "true"), 125, "cannot")
if not faults and (refused := run(slot, "mx", "true")).returncode == 125:
    print(f"skipped: {refused.stderr.strip()}")
    sys.exit(77)

# The command's own status, signal, input and output.
expect("success", run(slot, "m7", "true"), 0)
expect("a status", run(slot, "m7", "sh", "-c", "exit 9"), 9)
expect("a signal", run(slot, "m7", "sh", "-c", "kill -USR1 $$"), -signal.SIGUSR1)
expect("a crash", run(slot, "m7", "sh", "-c", "kill -SEGV $$"), -signal.SIGSEGV)
expect("a command that is not there", run(slot, "m7", "/nowhere/at/all"), 127, "nowhere")
with tempfile.NamedTemporaryFile() as file:
    expect("a file that is no program", run(slot, "m7", file.name), 126)
done = expect("a filter", run(slot, "m7", "tr", "a", "b", input="aaa"), 0)
if done.stdout != "bbb":
    faults.append(f"a filter: {done.stdout}")
expect("a slot in a slot", run(slot, "l9" if "l9" in able else "mx", slot, "mx", "true"), 125, "traced|fault")

for name in able:
    # The library inside of a program, as a shared object that is there from the start, and as one that is opened later.
    expect(f"{name} inside", run(slot, name, chosen, env={**os.environ, "QVR_EXPECTED_SLOT": name}), 0)
    for how in ({}, {"LD_PRELOAD": str(json.loads(run(info, "--json").stdout)["library"]["path"])}):
        seen = json.loads(expect(f"{name} shared", run(slot, name, info, "--json", env={**os.environ, **how}), 0).stdout)
        if seen["slot"] != name or seen["slot_by_features"] != able[-1]:
            faults.append(f"{name} {how}: the library takes {seen['slot']}, other code sees {seen['slot_by_features']}")
    # Programs that a program starts, one after another and at once.
    script = f'"{info}" --json & wait; exec "{info}" --json'
    found = re.findall(r'"slot": "(\w+)"', expect(f"{name} of a shell", run(slot, name, "sh", "-c", script), 0).stdout)
    if found != [name, name]:
        faults.append(f"{name} of a shell: {found}")
    # Handlers of the program's own for real faults.
    expect(f"{name} with handlers", run(slot, name, backtrace), 0)

# Nothing but CPUID stops: ten times the work is as many answers. And what runs behind the command is waited for.
counts = set()
for work in (100000, 1000000):
    python = f"import threading; t = [threading.Thread(target=lambda: sum(range({work}))) for _ in range(3)]; [x.start() for x in t]; [x.join() for x in t]"
    counts.add(re.search(r"answered .*", run(slot, "-v", "mx", sys.executable, "-c", python).stderr)[0])
if len(counts) != 1:
    faults.append(f"answers grow with work: {counts}")
done = expect("a program left behind", run(slot, "mx", "sh", "-c", "(sleep 0.2; echo late) & exit 3"), 3)
if done.stdout != "late\n":
    faults.append(f"a program left behind: {done.stdout}")

# A stop and its continuation, as a shell does them; and the end that is asked of the tool.
job = subprocess.Popen([str(slot), "mx", "sh", "-c", "kill -STOP $$; echo on"], stdout=subprocess.PIPE, text=True)
for _ in range(100):
    child = Path(f"/proc/{job.pid}/task/{job.pid}/children").read_text().split()
    if child and re.search(r"^State:\s+[tT]", Path(f"/proc/{child[0]}/status").read_text(), re.M):
        stopped = Path(f"/proc/{child[0]}/status").read_text()
        subprocess.run(["sleep", "0.3"])
        os.kill(int(child[0]), signal.SIGCONT)
        break
    subprocess.run(["sleep", "0.05"])
if job.communicate(timeout=20)[0] != "on\n" or job.returncode != 0:
    faults.append("a stopped command does not go on")
job = subprocess.Popen([str(slot), "mx", "sleep", "60"])
subprocess.run(["sleep", "0.5"])
job.terminate()
if job.wait(timeout=20) != -signal.SIGTERM:
    faults.append(f"an end asked for: {job.returncode}")

for fault in faults:
    print(fault)
print(f"{', '.join(able)}: {len(faults)} faults")
sys.exit(bool(faults))
