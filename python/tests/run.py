"""Runs the Python package's tests under pytest, or says why they are skipped
(exit code 77) when pytest, numpy or pandas is missing."""
import importlib.util
import os
import sys


def main():
    missing = [name for name in ("pytest", "numpy", "pandas")
               if importlib.util.find_spec(name) is None]
    if missing:
        print(f"skipped: {', '.join(missing)} not installed for {sys.executable}")
        return 77
    import pytest
    return pytest.main(["-q", "-p", "no:cacheprovider", os.path.dirname(os.path.abspath(__file__))])


# Worker processes that the tests start import this file again as their
# main module; only the first run starts the tests.
if __name__ == "__main__":
    sys.exit(main())
