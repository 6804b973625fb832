#!/usr/bin/env python3
"""Turns the JSON output of matgraph_bench into the table of docs/performance.md.

    build/release/bench/matgraph_bench --benchmark_out=bench.json --benchmark_out_format=json
    bench/ratios.py bench.json

Each ratio divides two results of the same run: the load by picojson's parse of the same
text, the save by picojson's serialize(true) of the same document. CPU time is used, so that
other processes on the machine weigh less; with repetitions, the median is taken.
"""
import json
import sys


def results(path):
    with open(path) as file:
        runs = json.load(file)["benchmarks"]
    table = {}
    for run in runs:
        if run.get("run_type") == "aggregate" and run.get("aggregate_name") != "median":
            continue
        name, size = run["run_name"].split("/")[:2]
        entry = table.setdefault(int(size), {})
        # A median, when there is one, replaces the single repetitions.
        if name not in entry or run.get("run_type") == "aggregate":
            entry[name] = run
    return table


def milliseconds(run):
    units = {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1e3}
    return run["cpu_time"] * units[run["time_unit"]]


def main():
    table = results(sys.argv[1])
    print("| G | text MB | parse ms | load ms | load/parse | serialize ms | save ms "
          "| save/serialize | library MB | library/text | DOM/text |")
    print("|---|---|---|---|---|---|---|---|---|---|---|")
    for size in sorted(table):
        entry = table[size]
        parse = milliseconds(entry["BM_PicojsonParse"])
        load = milliseconds(entry["BM_LoadGraphLibrary"])
        serialize = milliseconds(entry["BM_PicojsonSerialize"])
        save = milliseconds(entry["BM_SaveGraphLibrary"])
        memory = entry["BM_LoadedLibraryMemory"]
        text = memory["text_bytes"] / 1e6
        print(f"| {size} | {text:.1f} | {parse:.0f} | {load:.0f} | {load / parse:.2f} "
              f"| {serialize:.0f} | {save:.0f} | {save / serialize:.2f} "
              f"| {memory['library_bytes'] / 1e6:.1f} | {memory['library_per_file_byte']:.2f} "
              f"| {memory['dom_per_file_byte']:.2f} |")
    print()
    print("Cost per MB of text (linear growth shows as flat columns):")
    print()
    print("| G | parse ms/MB | load ms/MB | serialize ms/MB | save ms/MB |")
    print("|---|---|---|---|---|")
    for size in sorted(table):
        entry = table[size]
        text = entry["BM_LoadedLibraryMemory"]["text_bytes"] / 1e6
        cells = [milliseconds(entry[name]) / text for name in
                 ("BM_PicojsonParse", "BM_LoadGraphLibrary", "BM_PicojsonSerialize",
                  "BM_SaveGraphLibrary")]
        print(f"| {size} | " + " | ".join(f"{cell:.2f}" for cell in cells) + " |")


if __name__ == "__main__":
    main()
