#!/usr/bin/env python3
"""Prints the results of script/check-media as one table a proof: tables.py FOLDER MEDIUM...

Exits with 1 if a reported row is missing, a file is damaged, or a program ended by a signal."""
import collections
import os
import sys


def read(folder, medium, proof):
    path = os.path.join(folder, f"{medium}.{proof}")
    if not os.path.exists(path):
        return []
    with open(path, encoding="utf-8", errors="replace") as lines:
        return [line.rstrip("\n").split("\t") for line in lines]


def print_table(title, rows):
    print(f"\n{title}\n")
    widths = [max(len(row[i]) for row in rows) for i in range(len(rows[0]))]
    for row in rows:
        print("  ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip())


class Notes:
    """Messages that don't fit in a cell: numbered there, listed below the table."""

    def __init__(self):
        self.texts = []

    def cell(self, text):
        if text not in self.texts:
            self.texts.append(text)
        return f"[{self.texts.index(text) + 1}]"

    def print(self):
        for number, text in enumerate(self.texts, 1):
            print(f"[{number}] {text or 'without a message'}")


def print_life(results):
    notes = Notes()
    steps = list(dict.fromkeys(line[1] for lines in results.values() for line in lines))
    table = [["step"] + list(results)]
    for step in steps:
        cells = []
        for lines in results.values():
            texts = [line[2] if len(line) > 2 else line[0] for line in lines if line[1] == step]
            cells.append("-" if not texts else notes.cell(texts[0]) if texts[0] else "works")
        table.append([step] + cells)
    print_table("A station's life", table)
    notes.print()
    return 0


def print_saves(results):
    notes = Notes()
    names = list(dict.fromkeys(line[1] for lines in results.values() for line in lines))
    table = [["reported, then copied"] + list(results)]
    missing = 0
    for name in names:
        cells = []
        for lines in results.values():
            cell = "-"
            for line in lines:
                if line[1] == name and line[0] == "saved":
                    found = line[3:]
                    if found and found[0] == line[2]:
                        cell = "there"
                    else:
                        missing += 1
                        cell = "missing " + notes.cell(" ".join(found) + ", in the place of " + line[2])
                elif line[1] == name:
                    cell = "refused " + notes.cell(" ".join(line[2:]))
            cells.append(cell)
        table.append([name] + cells)
    print_table("The medium copied after each reported save", table)
    notes.print()
    return missing


def print_failures(results):
    table = [["medium", "failed writes", "missing without a message"]]
    notes = Notes()
    missing = 0
    for medium, lines in results.items():
        counts = next((line for line in lines if line[0] == "failed"), None)
        texts = [" ".join(line) for line in lines if line[0] != "failed"]
        shown = "".join(notes.cell(text) for text in texts[:3])
        table.append([medium, counts[1] if counts else "-", (counts[2] if counts else "-") + " " + shown])
        missing += int(counts[2]) if counts else 0
    print_table("A medium that fails at each write", table)
    notes.print()
    return missing


def print_two(results):
    table = [["medium", "runs", "both wrote", "one refused", "both refused", "runs with rows lost",
              "rows reported", "rows lost", "damaged", "crashed", "said"]]
    notes = Notes()
    faults = 0
    for medium, lines in results.items():
        count = collections.Counter()
        said = collections.Counter()
        writers = collections.defaultdict(set)
        lost_in = set()
        for line in lines:
            if line[0] == "file":
                count["runs"] += 1
                count["damaged"] += line[2] != "ok"
            elif line[0] == "writer":
                reported, found = int(line[3]), int(line[4])
                count["reported"] += reported
                count["lost"] += max(0, reported - found)
                if reported > found:
                    lost_in.add(line[1])
                if reported > 0:
                    writers[line[1]].add(line[2])
            elif line[0] == "said":
                text = " ".join(line[4:]).strip()
                count["crashed"] += line[3] == "ended"
                if line[3] not in ("opened", "closed") or text:
                    said[line[3] + ": " + text] += 1
        both = sum(len(who) == 2 for who in writers.values())
        one = sum(len(who) == 1 for who in writers.values())
        notes_of = " ".join(f"{n}x{notes.cell(text)}" for text, n in said.most_common(6))
        table.append([medium, str(count["runs"]), str(both), str(one), str(count["runs"] - both - one),
                      str(len(lost_in)), str(count["reported"]), str(count["lost"]),
                      str(count["damaged"]), str(count["crashed"]), notes_of])
        faults += count["lost"] + count["damaged"] + count["crashed"]
    print_table("Two machines at one station", table)
    notes.print()
    return faults


def print_speed(results):
    table = [["medium", "import s", "bare engine s", "ratio", "mode"]]
    for medium, lines in results.items():
        values = {line[0]: " ".join(line[1:]) for line in lines}
        if "bare" in values:
            program, bare = int(values["import"]), int(values["bare"])
            table.append([medium, f"{program / 1000:.2f}", f"{bare / 1000:.2f}",
                          f"{program / max(bare, 1):.2f}", values["mode"]])
        else:
            table.append([medium, "-", "-", "-", "; ".join(f"{k}: {v}" for k, v in values.items())])
    print_table("Import", table)
    return 0


def main():
    folder, media = sys.argv[1], sys.argv[2:]
    faults = 0
    for proof, show in (("life", print_life), ("saves", print_saves), ("failures", print_failures),
                        ("two", print_two), ("speed", print_speed)):
        results = {medium: read(folder, medium, proof) for medium in media}
        ended = [f"{medium}: ended: {line[1]}" for medium, lines in results.items()
                 for line in lines if line[0] == "ended"]
        results = {medium: [line for line in lines if line[0] != "ended"]
                   for medium, lines in results.items() if lines}
        if results:
            faults += show(results) + len(ended)
            for line in ended:
                print(line)
    print(f"\n{faults} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
