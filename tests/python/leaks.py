"""Runs a test on a sanitized build. Fails for what the sanitizers report and for what the extension or the library
lost.

    leaks.py TEST       ZELKOR_PRELOAD names the libraries that must come first in the process

Python itself ends without giving everything back. Leaks without a frame of ours are its own, and those in
`leaks.supp` are what it makes on the way through one.
"""

import os
import re
import subprocess
import sys
from pathlib import Path

OURS = re.compile(r"_core\.cpython|libzelkor_ast")


def main(test: str) -> int:
    suppressions = Path(__file__).with_name("leaks.supp")
    environment = os.environ | {
        "LD_PRELOAD": os.environ["ZELKOR_PRELOAD"],
        "PYTHONMALLOC": "malloc",
        "ASAN_OPTIONS": "detect_leaks=1:malloc_context_size=40:fast_unwind_on_malloc=0",
        "UBSAN_OPTIONS": "print_stacktrace=1",
        "LSAN_OPTIONS": f"suppressions={suppressions}:print_suppressions=0:exitcode=0",
    }
    done = subprocess.run([sys.executable, test], capture_output=True, text=True, check=False, env=environment)
    leaks = [text for text in done.stderr.split("\n\n") if re.match(r"\s*(Direct|Indirect) leak", text)]
    ours = [text for text in leaks if OURS.search(text)]
    passed = re.search(r"^OK", done.stderr, re.M) and done.returncode == 0
    if ours or not passed or "ERROR: AddressSanitizer" in done.stderr or "runtime error" in done.stderr:
        print("\n\n".join(ours) if passed and ours else done.stderr)
        return 1
    print(f"{len(leaks)} leaks of Python's own, none of ours")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
