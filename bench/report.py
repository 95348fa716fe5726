#!/usr/bin/env python3
"""Writes docs/performance.md and its plots.

usage: report.py RESULTS DOCS

RESULTS holds bench.json of the machine's own slot and bench-<slot>.json of others. They are cut by family into
DOCS/performance/<family>.json, each replacing what an earlier run left there, and the page is made from all of these
files. So a run of one family renews that family's section alone. Size and load times come as a table, load.md.
"""
import glob
import json
import math
import os
import sys

import matplotlib

matplotlib.use("svg")
import matplotlib.pyplot as plt  # noqa: E402

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


def result_row(r, limits):
    own = r["timings"][0]["min"]
    row = [title(r), r["case"], r["level"], number(own / r["elements"])]
    bytes_moved = (r["read"] + r["written"]) * r["elements"]
    row.append(number(bytes_moved / own) if bytes_moved else "")
    if r["best"]:
        best = r["timings"][r["best"]]
        row += [best["name"], number(best["min"] / r["elements"]), f"{r['ratio']:.2f}", f"{r['ratioMedian']:.2f}"]
    else:
        row += ["none", "", "", ""]
    row.append(f"{100 * r['share']:.0f}% {r['limitedBy']}" if r["share"] else "")
    # Two fused operations on full vectors in a cycle set the clock.
    if r.get("points"):
        row.append(f"{own * limits['fused'] / limits['vectorBytes'] / r['points']:.2f}")
    return row


def plot_family(family, run, path):
    """One panel for each level: the ratio of every case, on a logarithmic scale."""
    results = [r for r in run["results"] if r["best"]]
    names = list(dict.fromkeys(title(r) for r in results))
    if not names:
        return False
    figure, axes = plt.subplots(1, len(LEVELS), figsize=(12, 1.2 + 0.19 * len(names)), sharey=True)
    colours = {"L1": "#2b6cb0", "L2": "#2f855a", "memory": "#b7791f"}
    for level, axis in zip(LEVELS, axes):
        shown = [r for r in results if r["level"] == level]
        axis.scatter([r["ratio"] for r in shown], [names.index(title(r)) for r in shown], s=14, color=colours[level])
        axis.axvline(1, color="black", linewidth=0.8)
        axis.set_xscale("log", base=2)
        axis.set_xlim(0.125, 4)
        axis.set_xticks([0.125, 0.25, 0.5, 1, 2, 4], ["1/8", "1/4", "1/2", "1", "2", "4"])
        axis.set_title(level)
        axis.grid(axis="both", linewidth=0.3)
    axes[0].set_yticks(range(len(names)), names, fontsize=7)
    axes[0].set_ylim(len(names) - 0.5, -0.5)
    figure.supxlabel(f"time of {family} / time of the best peer (left of 1: faster)", fontsize=9)
    figure.tight_layout()
    figure.savefig(path, metadata={"Date": None})
    plt.close(figure)
    return True


def plot_bandwidth(family, run, path):
    """Share of the machine's limit by level, for cases that have one."""
    shares = {level: [100 * r["share"] for r in run["results"] if r["level"] == level and r["share"]] for level in LEVELS}
    shown = [level for level in LEVELS if shares[level]]
    if not shown:
        return False
    figure, axis = plt.subplots(figsize=(6, 2.6))
    axis.boxplot([shares[level] for level in shown], labels=shown, vert=False)
    axis.set_xlabel(f"{family}: percent of the machine's limit")
    axis.axvline(100, color="black", linewidth=0.8)
    figure.tight_layout()
    figure.savefig(path, metadata={"Date": None})
    plt.close(figure)
    return True


def slots_lines(data):
    """The slots beside the machine's own: ratio to the plain loop for the same level."""
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
    return ["Other slots, time ratio to the plain loop compiled for the slot's level:", ""] + table(
        ["function", "case"] + others, rows)


def family_lines(data, docs):
    family, run = data["family"], data["slots"].get(data["own"])
    if run is None:
        return []
    rounds = " Few rounds (`--quick`): single rows move by a tenth and more." if run.get("quick") else ""
    lines = [f"## {family}", "", machine_text(run), f"Slot {run['slot']}.{rounds}", ""] + limits_lines(run)
    ratios = {level: [r["ratio"] for r in run["results"] if r["best"] and r["level"] == level] for level in LEVELS}
    lines += table(["level", "cases", "geometric mean of ratios", "smallest", "largest"],
                   [[level, str(len(v)), f"{geometric_mean(v):.2f}", f"{min(v):.2f}", f"{max(v):.2f}"]
                    for level, v in ratios.items() if v])
    for suffix, plot, text in (("ratios", plot_family, "time ratios"), ("shares", plot_bandwidth, "shares of the limit")):
        name = f"performance/{family}-{suffix}.svg"
        if plot(family, run, os.path.join(docs, name)):
            lines += [f"![{family}: {text}]({name})", ""]
    for group in dict.fromkeys(r["group"] for r in run["results"]):
        lines += [f"### {family}: {group}", ""]
        results = [r for r in run["results"] if r["group"] == group]
        rows = [result_row(r, run["limits"]) for r in results]
        header = ["function", "case", "level", "ns/element", "GB/s", "best peer", "its ns/element", "ratio", "median of rounds",
                  "share of limit"] + (["cycles/point"] if any(r.get("points") for r in results) else [])
        lines += table(header, [row + [""] * (len(header) - len(row)) for row in rows])
    return lines + slots_lines(data)


METHOD = """# Performance

Every function beside what a user would take instead: VOLK, Eigen, the C library's memory functions, and plain loops
compiled by the same compiler with `-O3` for the level of the slot. `make bench` writes this page, `make bench
ONLY=family` renews one section.

One process, pinned to one core before the OpenMP runtime starts, so that every function runs in one thread. The
competitors of a case work on the same arrays and take turns, round by round, in samples of about 0.4 ms; the order
rotates. Times are the smallest of all rounds, and *ratio* is our smallest time over that of the best peer. *Median of
rounds* is the median over the rounds of ours over that peer, which shows how steady the ratio is. Every call goes through
a pointer. Peers pick their own instruction level and may use wider vectors than slot l9 has. Cases are named by their
length; *unaligned* arrays start one to three elements off a 64-byte boundary. *Level* is the smallest cache that holds
all arrays of the case. *Share of limit* is the time that the machine's own limit allows, over ours; the limits are
measured in the same run. In-place cases work on one array over and over, so at 15 elements each call waits for the
stores of the one before it. Of transforms, *cycles/point* are those for each of the N/2 complex points, in a clock of two
fused multiply-adds a cycle.
"""


def main():
    results, docs = sys.argv[1:3]
    folder = os.path.join(docs, "performance")
    os.makedirs(folder, exist_ok=True)
    runs = load_runs(results)
    with open(os.path.join(results, "bench.json")) as f:
        store_families(runs, json.load(f)["slot"], folder)
    loads = os.path.join(folder, "load.md")
    if os.path.exists(os.path.join(results, "load.md")):
        os.replace(os.path.join(results, "load.md"), loads)
    lines = METHOD.splitlines() + [""]
    if os.path.exists(loads):
        with open(loads) as f:
            lines += ["## Size and load", "", "Stripped; each load in a process of its own, the median of 101.", ""]
            lines += f.read().splitlines() + [""]
    for path in sorted(glob.glob(os.path.join(folder, "*.json"))):
        with open(path) as f:
            lines += family_lines(json.load(f), docs)
    with open(os.path.join(docs, "performance.md"), "w") as f:
        f.write("\n".join(lines).rstrip() + "\n")


if __name__ == "__main__":
    main()
