"""Fixtures shared by the tests of the matgraph package.

CTest runs these with PYTHONPATH pointing at the package in the build tree and with
MATGRAPH_SOURCE_DIR and MATGRAPH_CANONICALIZE (the C++ tool that loads and saves a file)
set; run by hand, the source tree is found from this file and the tool's tests skip.
"""

import os
import pathlib
import subprocess

import pytest

import matgraph

SOURCE_DIR = pathlib.Path(
    os.environ.get("MATGRAPH_SOURCE_DIR", pathlib.Path(__file__).resolve().parents[2])
)
EXAMPLES = SOURCE_DIR / "examples"
BASE_PATH = EXAMPLES / "base.matlib"
MATERIALS_PATH = EXAMPLES / "materials.matlib"

# Identities of the example libraries that the tests name.
FLOAT_TYPE = matgraph.UUID("6448c681-b973-4f28-bd17-0518157028ec")
COLOR3_TYPE = matgraph.UUID("824ba76c-18d9-4205-ab13-6e615de8479f")
COLOR_SEMANTIC = matgraph.UUID("c0eadaca-4392-4e2a-961c-38b187ef8f64")
ADD_CLASS = matgraph.UUID("4a68be42-cd35-4bfa-96b3-e9f1992b08eb")
WOOD_GRAPH = matgraph.UUID("2debc7d4-a247-439e-b70b-cbc267dfb6b9")


@pytest.fixture
def base():
    return matgraph.load(BASE_PATH, name="base")


@pytest.fixture
def materials(base):
    return matgraph.load(MATERIALS_PATH, parent=base, name="materials")


@pytest.fixture
def canonicalize():
    """Runs the C++ canonicalize tool on a file: the C++ load and save of its text."""
    tool = os.environ.get("MATGRAPH_CANONICALIZE")
    if not tool or not os.path.exists(tool):
        pytest.skip("MATGRAPH_CANONICALIZE does not name the canonicalize tool")

    def run(path, *parents):
        arguments = [tool]
        for parent in parents:
            arguments += ["--parent", str(parent)]
        subprocess.run(arguments + [str(path)], check=True, capture_output=True)
        return pathlib.Path(path).read_bytes()

    return run
