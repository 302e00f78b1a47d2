"""Checks the types of the package and of python/tests/typed_usage.py with
mypy, as pyproject.toml sets it up (strict), or says why it is skipped (exit
code 77) when mypy is not installed for this interpreter."""
import importlib.util
import os
import sys


def main() -> int:
    if importlib.util.find_spec("mypy") is None:
        print(f"skipped: mypy not installed for {sys.executable}")
        return 77
    from mypy import api
    root = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
    os.chdir(root)
    out, err, status = api.run(["--config-file", os.path.join(root, "pyproject.toml")])
    print(out, end="")
    print(err, end="", file=sys.stderr)
    return status


if __name__ == "__main__":
    sys.exit(main())
