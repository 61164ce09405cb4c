"""Runs the code cells of a notebook in their order, as a browser would, and compares the texts that they show with those
that stand in it: notebook.py [--write] NOTEBOOK

With --write the texts of this run are put into the notebook. Pictures and pages are made, and not compared.
"""

import ast
import contextlib
import io
import json
import sys

import matplotlib

matplotlib.use("Agg")


def run(source, names):
    """What a cell prints, and the text of its last expression."""
    tree = ast.parse(source)
    last = ast.Expression(tree.body.pop().value) if tree.body and isinstance(tree.body[-1], ast.Expr) else None
    printed = io.StringIO()
    with contextlib.redirect_stdout(printed):
        exec(compile(tree, "cell", "exec"), names)
        value = eval(compile(last, "cell", "eval"), names) if last else None
    if value is not None and hasattr(value, "_repr_html_"):
        assert value._repr_html_()
    return printed.getvalue(), None if value is None else repr(value)


def outputs_of(printed, value, number):
    """The same as a notebook keeps it."""
    outputs = []
    if printed:
        outputs.append({"name": "stdout", "output_type": "stream", "text": printed.splitlines(keepends=True)})
    if value is not None:
        outputs.append({"data": {"text/plain": value.splitlines(keepends=True)}, "execution_count": number,
                        "metadata": {}, "output_type": "execute_result"})
    return outputs


def main():
    path = sys.argv[-1]
    with open(path, encoding="utf-8") as file:
        notebook = json.load(file)
    names = {"__name__": "__main__"}
    cells = [cell for cell in notebook["cells"] if cell["cell_type"] == "code"]
    for number, cell in enumerate(cells, 1):
        outputs = outputs_of(*run("".join(cell["source"]), names), number)
        if "--write" not in sys.argv and outputs != cell["outputs"]:
            sys.exit(f"cell {number} shows\n{outputs}\nand not\n{cell['outputs']}")
        cell["outputs"], cell["execution_count"] = outputs, number
    if "--write" in sys.argv:
        with open(path, "w", encoding="utf-8") as file:
            json.dump(notebook, file, indent=1, ensure_ascii=False)
            file.write("\n")
    print(f"{len(cells)} cells of the notebook run")


if __name__ == "__main__":
    main()
