"""Saving: the text is the C++ library's own, byte for byte."""

import math

import pytest

import matgraph
from conftest import BASE_PATH, MATERIALS_PATH


def test_saving_an_example_gives_back_its_file(tmp_path, base, materials):
    for library, path in ((base, BASE_PATH), (materials, MATERIALS_PATH)):
        saved = tmp_path / path.name
        library.save(saved)
        assert saved.read_bytes() == path.read_bytes()
        assert library.dumps().encode() == path.read_bytes()


def build_library(base):
    """A library with one graph of every kind of default and a nested graph node."""
    library = matgraph.Library(base, "built")
    with matgraph.GraphFactory(library, "Inner") as factory:
        factory.add_input(base.types["float"], "x", 0.1)
        factory.add_output(base.types["float"], "y")
        factory.connect(factory.input_node, "x", factory.output_node, "y")
        inner = factory.finish()
    with matgraph.GraphFactory(library, "Outer") as factory:
        factory.add_input(base.types["string"], "label", "ü and \"quotes\"")
        factory.add_input(base.types["usage"], "usage", base.semantics["mask"])
        factory.add_output(base.types["float"], "y")
        node = factory.add_node(inner, "inner")
        noise = factory.add_node(base.node_classes["Noise"], "noise")
        factory.set_input_default(noise, "octaves", [-3])
        factory.set_input_default(noise, "position", [1e-7, 2.5, -0.0])
        factory.connect(node, "y", factory.output_node, "y")
        factory.set_editor_position(noise, -12.5, 3)
        factory.finish()
    return library


def test_a_built_library_saves_as_the_cpp_library_saves_it(tmp_path, base, canonicalize):
    library = build_library(base)
    saved = tmp_path / "built.matlib"
    library.save(saved)
    text = saved.read_bytes()
    assert canonicalize(saved, BASE_PATH) == text  # the C++ load and save change nothing
    again = matgraph.load(saved, parent=base)
    assert again.dumps().encode() == text
    assert again.graphs["Outer"].inputs["label"].default == ["ü and \"quotes\""]


def test_a_nan_float_refuses_to_save_and_writes_nothing(tmp_path, base):
    library = matgraph.Library(base)
    with matgraph.GraphFactory(library, "Broken") as factory:
        factory.add_input(base.types["float"], "x", math.nan)
        factory.finish()
    path = tmp_path / "broken.matlib"
    with pytest.raises(matgraph.InvalidDataAccessError) as raised:
        library.save(path)
    assert str(raised.value) == "Index out of Range: Float value is not a number"
    assert not path.exists()
    with pytest.raises(matgraph.InvalidDataAccessError):
        library.dumps()


def test_saving_to_a_place_that_can_not_be_written_raises_os_error(tmp_path, base):
    with pytest.raises(FileNotFoundError):
        base.save(tmp_path / "no such folder" / "base.matlib")
    with pytest.raises(TypeError):
        base.save(3)
