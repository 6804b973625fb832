"""The type stubs describe the module that is built: the same names, the same members."""

import ast
import pathlib

import matgraph
from matgraph import _matgraph

STUBS = pathlib.Path(matgraph.__file__).with_name("__init__.pyi")
STRUCT_SEQUENCE_EXTRAS = {"n_fields", "n_sequence_fields", "n_unnamed_fields"}


def stub_classes():
    tree = ast.parse(STUBS.read_text())
    classes, functions = {}, set()
    for statement in tree.body:
        if isinstance(statement, ast.ClassDef):
            members = set()
            for item in statement.body:
                if isinstance(item, ast.FunctionDef):
                    members.add(item.name)
                elif isinstance(item, ast.AnnAssign):
                    members.add(item.target.id)
                elif isinstance(item, ast.Assign):
                    members.update(target.id for target in item.targets)
            classes[statement.name] = members
        elif isinstance(statement, ast.FunctionDef):
            functions.add(statement.name)
    return classes, functions


def test_the_stubs_name_everything_the_module_exports():
    classes, functions = stub_classes()
    exported = {name for name in dir(_matgraph) if not name.startswith("_")}
    assert set(classes) | functions == exported
    assert set(matgraph.__all__) == exported


def test_each_stubbed_class_has_the_members_of_the_real_one():
    classes, _ = stub_classes()
    for name, stubbed in classes.items():
        real = getattr(matgraph, name)
        if issubclass(real, BaseException):
            continue  # their attributes are set on each instance
        if hasattr(real, "__members__"):  # an enumeration
            present = set(real.__members__)
        else:
            present = {member for member in vars(real) if not member.startswith("_")}
            present -= STRUCT_SEQUENCE_EXTRAS
        stubbed = {member for member in stubbed if not member.startswith("_")}
        assert stubbed == present, name
