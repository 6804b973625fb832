#!/usr/bin/env python3
"""Loads the example libraries, prints a graph and resolves one of its inputs.

    python3 examples/python/print_graph.py [GRAPH [NODE INPUT]]

With no arguments it prints the graph Wood and follows the "factor" input of its node
"tint" upstream, into the nested graph GrainPattern. The matgraph package must be
importable: installed with `cmake --install`, or from a build tree with
PYTHONPATH=build/default/python.
"""

import pathlib
import sys

import matgraph

EXAMPLES = pathlib.Path(__file__).resolve().parents[1]


def describe_source(graph, source, output):
    if source is None:
        return "not connected"
    node = graph.nodes[source]
    return f"from {node.name}.{node.node_class.outputs[output].name}"


def print_graph(graph):
    print(f"graph {graph.name} ({graph.uuid})")
    print("  inputs: " + ", ".join(f"{p.name}: {p.type.name} = {p.default}" for p in graph.inputs))
    print("  outputs: " + ", ".join(f"{p.name}: {p.type.name}" for p in graph.outputs))
    for node in graph.nodes:
        print(f"  [{node.index}] {node.name} ({node.kind.name} {node.node_class.name})")
        for name, source, output, default in node.inputs:
            shown = describe_source(graph, source, output)
            if default is not None:
                shown += f", default {default}"
            print(f"      {name}: {shown}")


def main(arguments):
    defaults = ["Wood", "tint", "factor"]
    graph_name, node_name, input_name = arguments[:3] + defaults[len(arguments[:3]):]
    base = matgraph.load(EXAMPLES / "base.matlib", name="base")
    materials = matgraph.load(EXAMPLES / "materials.matlib", parent=base, name="materials")
    graph = materials.graphs[graph_name]
    print_graph(graph)

    resolver = matgraph.Resolver(graph)
    node = graph.nodes[node_name]
    source, output, default = resolver.resolve_input(node.index, input_name)
    print(f"\n{node_name}.{input_name} resolves to ", end="")
    if source is None:
        print(f"no node; the value that applies is {default}")
    else:
        origin = resolver.node(source)
        output_name = origin.node_class.outputs[output].name
        where = "the root graph" if resolver.is_in_root_graph(source) else f"instance {source.instance}"
        print(f"{origin.name}.{output_name} ({origin.node_class.name}, in {where})")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
