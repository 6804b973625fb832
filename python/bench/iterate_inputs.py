#!/usr/bin/env python3
"""Times a walk over every node input of a library against the same walk over plain tuples.

    python3 python/bench/iterate_inputs.py BASE_FILE GRAPH_FILE [--runs N]
    python3 python/bench/iterate_inputs.py --synthetic TOOL [--graphs G] [--runs N]

The second form writes a synthetic pair of G graphs (default 1000) with the generator
tool (build/<preset>/bench/matgraph_synthetic) into a temporary folder first.

The walk visits every graph of the graph library, every node of each graph and every input
of each node, unpacks the input's (name, source, output, default) and counts connected
inputs and inputs with a default. The baseline does exactly that over nested Python lists holding one
tuple per input with the same values, made from the library before timing; a flat list of
the same tuples is timed as well. Each walk runs --runs times (default 5); the best run
counts, in CPU time (wall time is printed too; it suffers more on a busy machine). The
module should be an optimised build (the release preset).
"""

import argparse
import pathlib
import platform
import subprocess
import sys
import tempfile
import time

import matgraph


def walk_library(library):
    connected = with_default = 0
    for graph in library.graphs:
        for node in graph.nodes:
            for name, source, output, default in node.inputs:
                if source is not None:
                    connected += 1
                elif default is not None:
                    with_default += 1
    return connected, with_default


def walk_nested(graphs):
    connected = with_default = 0
    for nodes in graphs:
        for inputs in nodes:
            for name, source, output, default in inputs:
                if source is not None:
                    connected += 1
                elif default is not None:
                    with_default += 1
    return connected, with_default


def walk_flat(inputs):
    connected = with_default = 0
    for name, source, output, default in inputs:
        if source is not None:
            connected += 1
        elif default is not None:
            with_default += 1
    return connected, with_default


def plain(record):
    """A node input as a plain tuple."""
    return tuple(record)


def best_time(walk, argument, runs):
    """The best CPU time and the best wall time of runs calls, and what the walk returned."""
    best_cpu = best_wall = float("inf")
    result = None
    for _ in range(runs):
        cpu, wall = time.process_time(), time.perf_counter()
        result = walk(argument)
        best_cpu = min(best_cpu, time.process_time() - cpu)
        best_wall = min(best_wall, time.perf_counter() - wall)
    return best_cpu, best_wall, result


def cpu_name():
    try:
        for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines():
            if line.startswith("model name"):
                return line.split(":", 1)[1].strip()
    except OSError:
        pass
    return platform.processor() or "unknown CPU"


def synthetic_pair(tool, graph_count, folder):
    base, graphs = pathlib.Path(folder) / "base.matlib", pathlib.Path(folder) / "graphs.matlib"
    subprocess.run([tool, str(graph_count), str(base), str(graphs)], check=True)
    return base, graphs


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("files", nargs="*", help="BASE_FILE GRAPH_FILE")
    parser.add_argument("--synthetic", help="the matgraph_synthetic tool")
    parser.add_argument("--graphs", type=int, default=1000)
    parser.add_argument("--runs", type=int, default=5)
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as folder:
        if options.synthetic:
            base_path, graph_path = synthetic_pair(options.synthetic, options.graphs, folder)
        elif len(options.files) == 2:
            base_path, graph_path = map(pathlib.Path, options.files)
        else:
            parser.error("give BASE_FILE GRAPH_FILE or --synthetic TOOL")
        base = matgraph.load(base_path)
        library = matgraph.load(graph_path, parent=base)

    nested = [
        [[plain(record) for record in node.inputs] for node in graph.nodes]
        for graph in library.graphs
    ]
    flat = [record for nodes in nested for inputs in nodes for record in inputs]
    nodes = sum(len(graph) for graph in nested)

    library_cpu, library_wall, library_counts = best_time(walk_library, library, options.runs)
    nested_cpu, nested_wall, nested_counts = best_time(walk_nested, nested, options.runs)
    flat_cpu, flat_wall, flat_counts = best_time(walk_flat, flat, options.runs)
    assert library_counts == nested_counts == flat_counts, "the walks disagree"

    print(f"machine: {cpu_name()}, Python {platform.python_version()}")
    print(f"library: {len(nested)} graphs, {nodes} nodes, {len(flat)} node inputs "
          f"({library_counts[0]} connected, {library_counts[1]} with a default)")
    print(f"best of {options.runs} runs, CPU time (wall time):")
    print(f"  matgraph walk            {library_cpu * 1e3:7.1f} ms ({library_wall * 1e3:7.1f} ms)"
          f"  {library_cpu / len(flat) * 1e9:4.0f} ns per input")
    for label, cpu, wall in (("nested lists of tuples", nested_cpu, nested_wall),
                             ("one flat list of tuples", flat_cpu, flat_wall)):
        print(f"  {label:24} {cpu * 1e3:7.1f} ms ({wall * 1e3:7.1f} ms)"
              f"  matgraph / this: {library_cpu / cpu:.2f} ({library_wall / wall:.2f})")
    return 0


if __name__ == "__main__":
    sys.exit(main())
