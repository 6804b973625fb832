"""Loading libraries: the forms of the argument, the parent chain and every way a load fails."""

import pytest

import matgraph
from conftest import BASE_PATH, FLOAT_TYPE, MATERIALS_PATH

TYPE_ITEM = '{"content":"type","uuid":"6448c681-b973-4f28-bd17-0518157028ec"}'


@pytest.mark.parametrize(
    "argument",
    [
        pytest.param(str(BASE_PATH), id="str path"),
        pytest.param(BASE_PATH, id="pathlib path"),
        pytest.param(BASE_PATH.read_bytes(), id="bytes text"),
        pytest.param(BASE_PATH.read_text(), id="str text"),
    ],
)
def test_load_takes_a_path_or_the_text(argument):
    library = matgraph.load(argument, name="base")
    assert (len(library.types), len(library.semantics), len(library.node_classes)) == (11, 12, 24)
    assert library.name == "base"
    assert library.parent is None
    assert library.load_diagnostic.outcome == matgraph.LoadOutcome.Loaded


def test_loads_reads_text_whatever_it_starts_with():
    assert len(matgraph.loads(f"  [{TYPE_ITEM}]").types) == 1
    with pytest.raises(matgraph.LoadError) as error:
        matgraph.loads("base.matlib")
    assert error.value.outcome == matgraph.LoadOutcome.NotALibrary


def test_a_child_library_uses_its_parents_objects_but_does_not_list_them(base):
    child = matgraph.load(MATERIALS_PATH, parent=base)
    assert child.parent is base
    assert child.find_type(FLOAT_TYPE).name == "float"
    assert FLOAT_TYPE not in child.types
    with pytest.raises(KeyError):
        child.types[FLOAT_TYPE]
    # Graph nodes of the child use the parent's node classes.
    wood = child.graphs["Wood"]
    assert wood.nodes["shader"].node_class.library is base


def test_a_library_made_empty_has_nothing_and_no_diagnostic(base):
    library = matgraph.Library(base, "scratch")
    assert (library.name, library.parent, library.load_diagnostic) == ("scratch", base, None)
    assert [len(library.types), len(library.semantics), len(library.node_classes)] == [0, 0, 0]
    assert len(library.graphs) == 0
    assert library.find_type(FLOAT_TYPE).name == "float"


BAD_TEXTS = [
    # (why, text, outcome, message, (line, column), item index, item uuid, json path)
    ("not JSON", "not json", matgraph.LoadOutcome.NotALibrary,
     "syntax error at line 1, column 2", (1, 2), None, None, ""),
    ("root is not an array", "{}", matgraph.LoadOutcome.NotALibrary,
     "the root of the text is not an array", (0, 0), None, None, ""),
    ("item without uuid", '[{"content":"type"}]', matgraph.LoadOutcome.Refused,
     "InputFileParsingException: Value not found in object", (0, 0), 0, None, "/0/uuid"),
    ("kind in the wrong case", '[{"content":"Type","uuid":""}]', matgraph.LoadOutcome.Refused,
     "InputFileParsingException: Object with unknown type encountered", (0, 0), 0, None,
     "/0/content"),
    ("bad value component",
     '[{"content":"type","uuid":"6448c681-b973-4f28-bd17-0518157028ec",'
     '"default":{"component":"Float","value":1}}]',
     matgraph.LoadOutcome.Refused, "InputFileParsingException: Value has no valid component!",
     (0, 0), 0, FLOAT_TYPE, "/0/default/component"),
    ("connection from a node that is not there",
     '[{"content":"graph","uuid":"2debc7d4-a247-439e-b70b-cbc267dfb6b9","output":'
     '[{"name":"o","type":"","from":["5c365fd8-a8e4-4764-b20a-35b3775e2b9e","x"]}]}]',
     matgraph.LoadOutcome.Refused, "Index out of Range: Node not present", (0, 0), 0,
     matgraph.UUID("2debc7d4-a247-439e-b70b-cbc267dfb6b9"), "/0/output/0/from"),
    ("cut short", f"[{TYPE_ITEM}\n  x]", matgraph.LoadOutcome.LoadedPartially,
     "syntax error at line 2, column 3", (2, 3), None, None, ""),
]


@pytest.mark.parametrize(
    "why, text, outcome, message, place, item_index, item_uuid, json_path",
    BAD_TEXTS,
    ids=[case[0] for case in BAD_TEXTS],
)
def test_a_bad_text_raises_load_error_saying_what_and_where(
    why, text, outcome, message, place, item_index, item_uuid, json_path
):
    with pytest.raises(matgraph.LoadError) as raised:
        matgraph.loads(text)
    error = raised.value
    assert str(error) == message
    assert (error.outcome, (error.line, error.column)) == (outcome, place)
    assert (error.item_index, error.item_uuid, error.json_path) == (item_index, item_uuid, json_path)
    assert error.diagnostic.message == message
    assert isinstance(error, matgraph.Error)


def test_a_text_cut_short_loads_what_came_before_when_allowed():
    library = matgraph.loads(f"[{TYPE_ITEM}\n  x]", allow_partial=True)
    assert len(library.types) == 1
    diagnostic = library.load_diagnostic
    assert diagnostic.outcome == matgraph.LoadOutcome.LoadedPartially
    assert (diagnostic.line, diagnostic.column) == (2, 3)


def test_a_header_without_version_loads_an_empty_library():
    library = matgraph.loads(f'[{{"datasources":[]}},[{TYPE_ITEM}]]')
    assert len(library.types) == 0
    assert library.load_diagnostic.header_without_version


def test_file_problems_raise_the_operating_systems_errors(tmp_path):
    with pytest.raises(FileNotFoundError):
        matgraph.load(tmp_path / "missing.matlib")
    with pytest.raises(IsADirectoryError):
        matgraph.load(tmp_path)


@pytest.mark.parametrize(
    "call, message",
    [
        (lambda: matgraph.load(BASE_PATH, parent="base"), "parent must be a Library or None"),
        (lambda: matgraph.load(42), "expected str, bytes or os.PathLike object, not int"),
        (lambda: matgraph.loads(42), "expected str, got int"),
        (lambda: matgraph.Library(name=b"x"), "expected str, got bytes"),
    ],
    ids=["parent", "path", "text", "name"],
)
def test_arguments_of_the_wrong_type_raise_type_error(call, message):
    with pytest.raises(TypeError) as error:
        call()
    assert str(error.value) == message
