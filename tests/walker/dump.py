"""Prints the accessibility tree of a program: role, name, description, text, value, states."""
import sys
import tempfile

from desktop import Program

with tempfile.TemporaryDirectory() as folder, Program(sys.argv[1:], folder) as program:
    for node, depth in program.root.tree():
        interfaces = node.interfaces
        parts = [f"{'  ' * depth}{node.role} {node.name!r} {node.description!r}"]
        if "Text" in interfaces:
            parts.append(f"text={node.text!r}")
        if "Value" in interfaces:
            parts.append(f"value={node.value:g}")
        if "Action" in interfaces:
            parts.append(f"actions={node.actions}")
        print(*parts, *sorted(node.states - {"enabled", "showing", "visible", "focusable"}))
