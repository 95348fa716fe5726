#!/usr/bin/env python3
"""Writes docs/performance.md, a page for each family, and their plots.

usage: report.py RESULTS DOCS

RESULTS holds bench.json of the machine's own slot and bench-<slot>.json of others. They are cut by family into
DOCS/performance/<family>.json, each replacing what an earlier run left there, and the pages are made from all of these
files. So a run of one family renews that family alone. Size and load times come as a table, load.md, threads as threads.md,
the versions of packages as versions.txt, two-*.json hold what two cores did. What keeps a row from being first stands in
DOCS/performance/limits.txt: shell patterns of names and cases, then the reason, indented.
"""
import fnmatch
import glob
import json
import math
import os
import sys

import matplotlib

matplotlib.use("svg")
import matplotlib.pyplot as plt  # noqa: E402

plt.rcParams["svg.hashsalt"] = "morvenqvr"  # the same drawing has the same names

LEVELS = ["L1", "L2", "memory"]


def load_runs(folder):
    runs = []
    for path in sorted(glob.glob(os.path.join(folder, "bench*.json"))):
        with open(path) as f:
            runs.append(json.load(f))
    return runs


def compact(run):
    """A result to a line."""
    head = json.dumps({key: value for key, value in run.items() if key != "results"})
    return head[:-1] + ', "results": [\n' + ",\n".join(json.dumps(r) for r in run["results"]) + "]}"


def store_families(runs, own_slot, folder):
    families = sorted({r["family"] for run in runs for r in run["results"]})
    for family in families:
        slots = {}
        for run in runs:
            part = dict(run, results=[r for r in run["results"] if r["family"] == family])
            if part["results"]:
                slots[run["slot"]] = part
        with open(os.path.join(folder, family + ".json"), "w") as f:
            f.write(f'{{"family": "{family}", "own": "{own_slot}", "slots": {{\n')
            f.write(",\n".join(f'"{slot}": ' + compact(part) for slot, part in sorted(slots.items())))
            f.write("\n}}\n")


def store_two(results, folder):
    """Our times on two cores, by function and case."""
    path = os.path.join(folder, "two-threads.txt")
    times = dict(line.rsplit(" ", 1) for line in read_part(folder, "two-threads.txt") if line)
    for found in sorted(glob.glob(os.path.join(results, "two-*.json"))):
        with open(found) as f:
            times |= {f"{title(r)} {r['case']}": f"{r['timings'][0]['min']:.4g}" for r in json.load(f)["results"]}
    with open(path, "w") as f:
        f.writelines(f"{name} {time}\n" for name, time in sorted(times.items()))


def geometric_mean(values):
    return math.exp(sum(map(math.log, values)) / len(values)) if values else 0


def title(result):
    return result["name"] + (" " + result["variant"] if result["variant"] else "")


def number(x):
    return f"{x:.3g}" if x < 10 else f"{x:.1f}"


def table(header, rows):
    lines = ["| " + " | ".join(header) + " |", "|" + "---|" * len(header)]
    lines += ["| " + " | ".join(row) + " |" for row in rows]
    return lines + [""]


def machine_text(run):
    machine = run["machine"]
    text = f"{machine['processor'] or 'unknown processor'}, {machine['processors']} processor(s) at hand"
    text += f", frequency governor {machine['governor']}" if machine["governor"] else ", frequency governor not told"
    return text + f"; {machine['compiler']}."


def limits_lines(run):
    limits = run["limits"]
    patterns = list(limits["bandwidth"]["L1"])
    rows = [[level] + [number(limits["bandwidth"][level][p]) or "-" for p in patterns] for level in LEVELS]
    call = limits["exportedCall"] - limits["pointerCall"]
    return table(["GB/s"] + patterns, rows) + [
        f"With {limits['vectorBytes']}-byte vectors; bytes read and bytes written are added, the fastest of several "
        "forms of each loop counts. Arithmetic, 10^9 operations a second in single precision: fused multiply-add "
        f"{number(limits['fused'])} (two each), product {number(limits['product'])}, division "
        f"{number(limits['division'])}, root {number(limits['root'])}; division in double precision "
        f"{number(limits['doubleDivision'])}. A call through a pointer takes {limits['pointerCall']:.2f} ns, of an "
        f"export {limits['exportedCall']:.2f} ns: dispatch adds {call:.2f} ns.",
        "",
    ]


# Peers that choose their instructions by the machine, beyond what slot l9 may use. All others are held to the level.
MACHINE_WIDE = {"VOLK", "memcpy", "memset", "memset of bytes", "aligned_alloc", "libyuv", "zimg", "libvips", "stb", "liquid-dsp"}


def machine_wide(name):
    return name in MACHINE_WIDE or name.startswith("FFTW")


def best_of(r, wide):
    """The fastest peer, of all or of those held to the level; None without one."""
    peers = [t for t in r["timings"][1:] if wide or not machine_wide(t["name"])]
    return min(peers, key=lambda t: t["min"]) if peers else None


def against(r, wide):
    peer = best_of(r, wide)
    return r["timings"][0]["min"] / peer["min"] if peer else None


def ratio_text(r, wide):
    peer = best_of(r, wide)
    return f"{r['timings'][0]['min'] / peer['min']:.2f} {peer['name']}" if peer else ""


def settle_shares(run):
    """What a case reaches is possible: the fastest case of a level and kind of limit is the limit, if it beats the loops."""
    most = {}
    for r in run["results"]:
        key = r["level"], r["limitedBy"]
        most[key] = max(most.get(key, 1), r["share"])
    for r in run["results"]:
        r["share"] /= most[r["level"], r["limitedBy"]]


def result_row(r, limits):
    own = r["timings"][0]["min"]
    row = [title(r), r["case"], r["level"], number(own / r["elements"])]
    bytes_moved = (r["read"] + r["written"]) * r["elements"]
    row.append(number(bytes_moved / own) if bytes_moved else "")
    row += [ratio_text(r, False), ratio_text(r, True), f"{r['ratioMedian']:.2f}" if r["best"] else ""]
    row.append(f"{100 * r['share']:.0f}% {r['limitedBy']}" if r["share"] else "")
    # Two fused operations on full vectors in a cycle set the clock.
    if r.get("points"):
        row.append(f"{own * limits['fused'] / limits['vectorBytes'] / r['points']:.2f}")
    return row


def plot_family(family, run, path):
    """One panel for each level: the ratio of every case, on a logarithmic scale wide enough for all."""
    results = [r for r in run["results"] if r["best"]]
    names = list(dict.fromkeys(title(r) for r in results))
    if not names:
        return False
    low = min(0.125, 2.0 ** math.floor(math.log2(min(r["ratio"] for r in results))))
    high = max(4, 2.0 ** math.ceil(math.log2(max(r["ratio"] for r in results))))
    ticks = [2.0 ** k for k in range(round(math.log2(low)), round(math.log2(high)) + 1)]
    step = 1 + (len(ticks) - 1) // 8
    figure, axes = plt.subplots(1, len(LEVELS), figsize=(12, 1.2 + 0.19 * len(names)), sharey=True)
    colours = {"L1": "#2b6cb0", "L2": "#2f855a", "memory": "#b7791f"}
    for level, axis in zip(LEVELS, axes):
        shown = [r for r in results if r["level"] == level]
        axis.scatter([r["ratio"] for r in shown], [names.index(title(r)) for r in shown], s=14, color=colours[level])
        axis.axvline(1, color="black", linewidth=0.8)
        axis.set_xscale("log", base=2)
        axis.set_xlim(low, high)
        marks = [t for t in ticks if round(math.log2(t)) % step == 0]
        axis.set_xticks(marks, [f"{t:g}" if t >= 1 else f"1/{1 / t:g}" for t in marks], fontsize=7)
        axis.set_title(level)
        axis.grid(axis="both", linewidth=0.3)
    axes[0].set_yticks(range(len(names)), names, fontsize=7)
    axes[0].set_ylim(len(names) - 0.5, -0.5)
    figure.supxlabel(f"time of {family} / time of the best peer (left of 1: faster)", fontsize=9)
    figure.tight_layout()
    figure.savefig(path, metadata={"Date": None})
    plt.close(figure)
    return True


# What one does on a day: words, function, variant, start of the case, family.
TASKS = [
    ("add two arrays, 4096 floats", "qvrsAdd_32f", "", "4096", "vector"),
    ("16-bit samples to floats, 4096", "qvrsConvert_16s32f", "", "4096", "vector"),
    ("mean of 65,536 floats", "qvrsMean_32f", "", "65536", "vector"),
    ("maximum and its place, 4096", "qvrsMaxIndx_32f", "", "4096", "vector"),
    ("sort 65,536 floats", "qvrsSortAscend_32f_I", "random", "65536", "vector"),
    ("exp of 4096 floats", "qvrsExp_32f", "", "4096", "elementary"),
    ("logarithm of 4096, 11 bits", "qvrsLn_32f_A11", "", "4096", "elementary"),
    ("sine of 4096, 11 bits", "qvrsSin_32f_A11", "", "4096", "elementary"),
    ("magnitude of 4096 complex", "qvrsMagnitude_32fc", "", "4096", "elementary"),
    ("real FFT of 1024", "qvrsFFTFwd_RToCCS_32f", "", "order 10", "fourier"),
    ("real FFT of 65,536", "qvrsFFTFwd_RToCCS_32f", "", "order 16", "fourier"),
    ("real FFT of 4096 doubles", "qvrsFFTFwd_RToCCS_64f", "", "order 12", "fourier"),
    ("300,000 convolved with 3000", "qvrsConv_32f", "", "300000 by 3000", "fourier"),
    ("Hann window on 4096", "qvrsWinHann_32f_I", "", "4096", "fourier"),
    ("FIR, 64 taps, 4096 samples", "qvrsFIR_32f", "", "64 taps, 4096", "filters"),
    ("FIR, 1024 taps, 65,536 samples", "qvrsFIR_32f", "", "1024 taps, 65536", "filters"),
    ("recursive, order 4, 1024 samples", "qvrsIIR_64f", "", "order 4, 1024", "filters"),
    ("median of 31, 4096 samples", "qvrsFilterMedian_32f_I", "", "mask 31, 4096", "filters"),
    ("picture to half, area mean", "qvriResizeSqrPixel_8u_C1R", "", "super 640x480 to 320x240", "image"),
    ("picture to a fifth, Lanczos", "qvriResizeSqrPixel_8u_C1R", "", "Lanczos antialiased 4000x3000 to 800x600", "image"),
    ("picture enlarged, linear", "qvriResizeSqrPixel_8u_C1R", "", "linear 640x480 to 1920x1080", "image"),
]


def find_task(task, families):
    words, name, variant, case, family = task
    run = families.get(family)
    if not run:
        return None
    found = [r for r in run["results"] if r["name"] == name and r["case"].startswith(case)
             and (not variant or r["variant"] == variant) and r["best"]]
    if not found:
        raise SystemExit(f"no row for the task '{words}': {name} {variant} {case}")
    return found[0]


def time_text(ns):
    return f"{ns:.0f} ns" if ns < 1000 else f"{ns / 1e3:.3g} us" if ns < 1e6 else f"{ns / 1e6:.3g} ms"


# The Debian package that a peer comes from, by the beginning of its name.
PACKAGES = {"VOLK": "libvolk2-dev", "Eigen": "libeigen3-dev", "FFTW": "libfftw3-dev", "SLEEF": "libsleef-dev",
            "liquid": "libliquid-dev", "libyuv": "libyuv-dev", "zimg": "libzimg-dev", "libvips": "libvips-dev",
            "stb": "libstb-dev", "glibc": "libc6", "mem": "libc6", "vqsort": "libhwy-dev"}


def peer_text(name, versions):
    """A peer and its version."""
    for start, package in PACKAGES.items():
        if name.startswith(start) and package in versions:
            return f"{name}, {versions[package]}"
    return name


def task_lines(families, docs):
    folder = os.path.join(docs, "performance")
    versions = dict(line.split() for line in read_part(folder, "versions.txt") if line)
    two = dict(line.rsplit(" ", 1) for line in read_part(folder, "two-threads.txt") if line)
    shown = [(task[0], find_task(task, families)) for task in TASKS]
    shown = [(words, r) for words, r in shown if r]
    figure, axis = plt.subplots(figsize=(8, 0.6 + 0.26 * len(shown)))
    ratios = [r["ratio"] for _, r in shown]
    axis.barh(range(len(shown)), ratios, color=["#2b6cb0" if x <= 1 else "#b7791f" for x in ratios])
    axis.axvline(1, color="black", linewidth=0.8)
    for i, (x, (_, r)) in enumerate(zip(ratios, shown)):
        axis.text(x, i, f" {x:.2f}  {r['timings'][r['best']]['name']}", va="center", fontsize=7)
    axis.set_yticks(range(len(shown)), [words for words, _ in shown], fontsize=8)
    axis.set_ylim(len(shown) - 0.5, -0.5)
    axis.set_xlim(0, max(1.4, max(ratios) * 1.25))
    axis.set_xlabel("our time / time of the fastest peer, one core: shorter is faster", fontsize=8)
    figure.tight_layout()
    figure.savefig(os.path.join(docs, "performance/tasks.svg"), metadata={"Date": None})
    plt.close(figure)
    rows = []
    for words, r in shown:
        both = two.get(f"{title(r)} {r['case']}")
        peer = r["timings"][r["best"]]
        rows.append([words, time_text(r["timings"][0]["min"]), time_text(float(both)) if both else "", time_text(peer["min"]),
                     peer_text(peer["name"], versions), f"{r['ratio']:.2f}"])
    return ["![everyday tasks: our time over the fastest peer's](performance/tasks.svg)", ""] + table(
        ["task", "ours, one core", "two cores, where it forks", "fastest peer, one core", "which", "ratio, one core"], rows)


def reasons(docs):
    """Patterns and their reasons."""
    found, patterns, text = [], [], []
    path = os.path.join(docs, "performance/limits.txt")
    for line in open(path) if os.path.exists(path) else []:
        if line.startswith("#") or not line.strip():
            continue
        if line.startswith(" "):
            text.append(line.strip())
            continue
        if text:
            found.append((patterns, " ".join(text)))
            text = []
        patterns = [p.strip() for p in line.split(",")]
    return found + ([(patterns, " ".join(text))] if text else [])


def versions_lines(docs):
    found = [line.split() for line in read_part(os.path.join(docs, "performance"), "versions.txt") if line]
    return ["Packages: " + ", ".join(f"{name} {version}" for name, version in found) + ".", ""] if found else []


def lost_lines(families, docs):
    why = reasons(docs)
    lines = []
    for family, run in families.items():
        rows = []
        for r in run["results"]:
            if r["best"] and r["ratio"] > 1.05:
                label = f"{title(r)} {r['case']}"
                reason = next((text for patterns, text in why if any(fnmatch.fnmatch(label, p) for p in patterns)), "")
                rows.append((r["ratio"], [title(r), r["case"], r["level"], number(r["timings"][0]["min"] / r["elements"]),
                                          ratio_text(r, False), ratio_text(r, True), reason]))
        if rows:
            lines += [f"<details><summary>{family}: {len(rows)} of {sum(1 for r in run['results'] if r['best'])} "
                      "compared cases</summary>", ""]
            lines += table(["function", "case", "level", "ns/element", "peer of the level", "any peer", "what stands in the way"],
                           [row for _, row in sorted(rows, key=lambda x: -x[0])]) + ["</details>", ""]
    return lines


def summary_lines(families):
    rows = []
    for family, run in families.items():
        for wide in (False, True):
            ratios = [x for x in (against(r, wide) for r in run["results"]) if x]
            if not ratios:
                continue
            rows.append([family, "any peer" if wide else "peers held to the level", str(len(ratios)),
                         f"{geometric_mean(ratios):.2f}", str(sum(x > 1.05 for x in ratios))])
    return table(["family", "against", "cases", "geometric mean of ratios", "slower by more than 5 %"], rows)


def function_lines(run):
    """One row a function: the ratio to any peer at the largest case of each level."""
    cells = {}
    for r in run["results"]:
        if r["best"]:
            cells.setdefault(title(r), {})[r["level"]] = r
    rows = [[name] + [f"{by[level]['ratio']:.2f} ({by[level]['case']})" if level in by else "" for level in LEVELS]
            for name, by in cells.items()]
    return table(["function"] + LEVELS, rows) if rows else []


def slots_lines(data):
    """The slots beside the machine's own: ratio to the fastest peer of the same level."""
    others = [slot for slot in data["slots"] if slot != data["own"]]
    if not others:
        return []
    cells = {}
    for slot in others:
        for r in data["slots"][slot]["results"]:
            if r["best"]:
                cells.setdefault((title(r), r["case"]), {})[slot] = f"{r['ratio']:.2f}"
    rows = [[name, case] + [by_slot.get(slot, "") for slot in others] for (name, case), by_slot in cells.items()]
    if not rows:
        return []
    return ["## Other slots", "", "Time ratio to the fastest peer of the slot's level: plain loops compiled for it, zimg and libyuv held to it.", "",
            "<details><summary>all cases</summary>", ""] + table(["function", "case"] + others, rows) + ["</details>", ""]


def family_page(data, docs):
    family, run = data["family"], data["slots"][data["own"]]
    rounds = " Few rounds (`--quick`): single rows move by a tenth and more." if run.get("quick") else ""
    lines = [f"# Performance: {family}", "", machine_text(run), f"Slot {run['slot']}.{rounds} How it is measured is told in "
             "[performance.md](../performance.md).", ""] + limits_lines(run)
    name = f"{family}-ratios.svg"
    if plot_family(family, run, os.path.join(docs, "performance", name)):
        lines += [f"![{family}: time ratios]({name})", ""]
    lines += ["## One row a function", "", "Time ratio to the fastest peer at the largest case of each level.", ""]
    lines += function_lines(run) + ["## Every case", ""]
    for group in dict.fromkeys(r["group"] for r in run["results"]):
        results = [r for r in run["results"] if r["group"] == group]
        rows = [result_row(r, run["limits"]) for r in results]
        header = ["function", "case", "level", "ns/element", "GB/s", "ratio, peer of the level", "ratio, any peer",
                  "median of rounds", "share of limit"] + (["cycles/point"] if any(r.get("points") for r in results) else [])
        lines += [f"<details><summary>{group}</summary>", ""]
        lines += table(header, [row + [""] * (len(header) - len(row)) for row in rows]) + ["</details>", ""]
    lines += slots_lines(data)
    with open(os.path.join(docs, "performance", family + ".md"), "w") as f:
        f.write("\n".join(lines).rstrip() + "\n")


METHOD = """# Performance

"""

HOW = """## How it is measured

`make bench` measures every function beside what a user would take instead and writes these pages, `make bench
ONLY=family` renews one family. Peers held to the level are compiled for the instructions that our slot may use: plain loops
with the compiler's vectoriser, Eigen, SLEEF, glibc's vector functions, zimg where it is told its level. Any peer also means
those that take all that the processor has, wider vectors than slot l9 among it: the C library's memory functions, VOLK, FFTW,
libyuv, zimg with 64-byte vectors, which it leaves alone by itself, libvips.

One process, pinned to one core before the OpenMP runtime starts, so that every function runs in one thread. The
competitors of a case work on the same arrays and take turns, round by round, in samples of about 0.4 ms; the order
rotates. Times are the smallest of all rounds, and *ratio* is our smallest time over that of the best peer. *Median of
rounds* is the median over the rounds of ours over that peer, which shows how steady the ratio is. Every call goes through
a pointer. Cases are named by their length; *unaligned* arrays start one to three elements off a 64-byte boundary. *Level* is
the smallest cache that holds all arrays of the case. *Share of limit* is the time that the machine's own limit allows, over
ours: the fastest loop of the same run, or the fastest case where one beats the loops. In-place cases work on one array over
and over, so at 15 elements each call waits for the stores of the one before it. Of transforms, *cycles/point* are those for
each of the N/2 complex points, in a clock of two fused multiply-adds a cycle. FFTW plans by measuring up to order 18, by
estimate above.
"""

THREADS = """## A second thread

The functions that fork, at the length from which they do and at 10 and 100 times that. Below about a thousand times the cost of
a fork it does not pay: set `OMP_NUM_THREADS=1` where calls are short or the cores are busy.

"""


def read_part(folder, name):
    path = os.path.join(folder, name)
    if not os.path.exists(path):
        return []
    with open(path) as f:
        return f.read().splitlines() + [""]


def main():
    results, docs = sys.argv[1:3]
    folder = os.path.join(docs, "performance")
    os.makedirs(folder, exist_ok=True)
    if os.path.exists(os.path.join(results, "bench.json")):
        with open(os.path.join(results, "bench.json")) as f:
            store_families(load_runs(results), json.load(f)["slot"], folder)
    store_two(results, folder)
    for name in ("load.md", "threads.md", "versions.txt"):
        if os.path.exists(os.path.join(results, name)):
            os.replace(os.path.join(results, name), os.path.join(folder, name))
    families = {}
    for path in sorted(glob.glob(os.path.join(folder, "*.json"))):
        with open(path) as f:
            data = json.load(f)
        if data.get("own") in data.get("slots", {}): # the other files are no families
            families[data["family"]] = data["slots"][data["own"]]
            settle_shares(families[data["family"]])
            family_page(data, docs)
    lines = METHOD.splitlines() + task_lines(families, docs)
    lines += ["## In short", ""] + summary_lines(families)
    lines += ["Every case: " + ", ".join(f"[{family}](performance/{family}.md)" for family in families) + ".", ""]
    lines += ["## Where others are faster", "", "All cases that a peer does faster by more than 5 %.", ""]
    lines += lost_lines(families, docs)
    threads = read_part(folder, "threads.md")
    lines += THREADS.splitlines() + [""] + threads if threads else []
    load = read_part(folder, "load.md")
    if load:
        lines += ["## Size and load", "", "Stripped; each load in a process of its own, the median of 101.", ""] + load
    lines += HOW.splitlines() + [""] + versions_lines(docs) + [machine_text(next(iter(families.values())))]
    with open(os.path.join(docs, "performance.md"), "w") as f:
        f.write("\n".join(lines).rstrip() + "\n")


if __name__ == "__main__":
    main()
