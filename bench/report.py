#!/usr/bin/env python3
"""Runs the benchmarks and prints their ratios beside the limits. Exits 1 where one is exceeded."""
import contextlib
import json
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

TEN_YEARS = 350592
YEAR = 35040


def run_benchmarks(folder: pathlib.Path) -> dict[str, float]:
    """The least time of each benchmark: what is left when the machine does nothing else."""
    with tempfile.NamedTemporaryFile(suffix=".json") as out:
        subprocess.run([folder / "rillbook_bench", "--benchmark_repetitions=5",
                        "--benchmark_enable_random_interleaving=true",
                        f"--benchmark_out={out.name}", "--benchmark_out_format=json"],
                       check=True, stdout=subprocess.DEVNULL)
        runs = json.load(open(out.name, encoding="utf-8"))["benchmarks"]
    times: dict[str, float] = {}
    for run in runs:
        if run["run_type"] == "iteration":
            name = run["run_name"].split("/iterations")[0].removesuffix("/real_time")
            times[name] = min(times.get(name, float("inf")), run["real_time"])
    return times


def peak_kib(folder: pathlib.Path, rows: int) -> int:
    with tempfile.TemporaryDirectory() as work:
        file = pathlib.Path(work) / "logger.csv"
        subprocess.run([folder / "bench_write_years", file, str(rows)], check=True)
        done = subprocess.run([folder / "bench_import", file, str(rows)], check=True, text=True,
                              capture_output=True)
    return int(done.stdout)


@contextlib.contextmanager
def display():
    """A display of our own: off-screen windows know neither a server nor its fonts."""
    read_end, write_end = os.pipe()
    server = subprocess.Popen(["Xvfb", "-displayfd", str(write_end), "-nolisten", "tcp"],
                              pass_fds=[write_end], stderr=subprocess.DEVNULL)
    try:
        number = os.read(read_end, 16).decode().strip()
        yield os.environ | {"DISPLAY": f":{number}", "QT_QPA_PLATFORM": "xcb"}
    finally:
        server.terminate()
        server.wait()


def start_ratio(folder: pathlib.Path) -> float:
    """Alternates the two programs, so that what else the machine does falls on both."""
    times: dict[str, list[float]] = {"bench_start_program": [], "bench_start_bare": []}
    with display() as environment:
        for _ in range(40):
            for name, taken in times.items():
                begin = time.perf_counter()
                subprocess.run([folder / name], check=True, env=environment)
                taken.append(time.perf_counter() - begin)
    return (statistics.median(times["bench_start_program"]) /
            statistics.median(times["bench_start_bare"]))


def main() -> int:
    folder = pathlib.Path(sys.argv[1]).resolve()
    times = run_benchmarks(folder)
    series, ten_series = times[f"Series/{YEAR}"], times[f"Series/{TEN_YEARS}"]
    daily, ten_daily = times[f"DailySeries/{YEAR}"], times[f"DailySeries/{TEN_YEARS}"]
    growth = (peak_kib(folder, TEN_YEARS) - peak_kib(folder, YEAR)) / 1024
    rows = [
        ("import, rows a second against a bare loop", times["BareInsert"] / times["ImportFirst"],
         ">=", 0.8),
        ("second import, time against the first", times["ImportSecond"] / times["ImportFirst"],
         "<=", 1.0),
        ("peak memory, ten years less one (MiB)", growth, "<=", 8.0),
        ("LoadSeries against a bare walk", series / times[f"BareWalk/{YEAR}"], "<=", 2.0),
        ("LoadDailySeries against LoadSeries", daily / series, "<=", 1.25),
        ("LoadSeries, ten years against one", ten_series / series, "<=", 11.0),
        ("LoadDailySeries, ten years against one", ten_daily / daily, "<=", 11.0),
        ("FillGrid against LoadDailySeries", times[f"FillSheet/{YEAR}"] / daily, "<=", 2.0),
        ("import setup, a new channel, against a copy", times["NewChannel"] / times["BareNewChannel"],
         "<=", 3.0),
        ("journal of 200 rows against its statements", times["StoredJournal"] / times["BareJournal"],
         "<=", 3.0),
        ("its window, opened and saved (of 100 ms)", times["JournalWindow"] / 100, "<=", 1.0),
        ("record editor, ten years, over its keys (of 0.5 s)",
         (times["OpenRecords"] - times["BareKeys"]) / 500, "<=", 1.0),
        ("a channel emptied, ten years, against an UPDATE",
         times["EmptyChannel"] / times["BareEmptyChannel"], "<=", 10.0),
        ("start to window against a bare program", start_ratio(folder), "<=", 1.3),
    ]
    missed = 0
    for what, ratio, relation, limit in rows:
        held = ratio >= limit if relation == ">=" else ratio <= limit
        missed += not held
        print(f"{what:50} {ratio:6.2f}   {relation} {limit:<5} {'' if held else 'MISSED'}")
    return 1 if missed else 0


if __name__ == "__main__":
    sys.exit(main())
