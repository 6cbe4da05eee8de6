"""Runs a test under LeakSanitizer and fails for what the extension or the library lost.

    leaks.py TEST

Python itself ends without giving everything back; leaks without a frame of ours are its own.
"""

import os
import re
import subprocess
import sys

OURS = re.compile(r"_core\.cpython|libzelkor_ast")


def main(test: str) -> int:
    environment = os.environ | {"ASAN_OPTIONS": "detect_leaks=1:malloc_context_size=40:fast_unwind_on_malloc=0"}
    done = subprocess.run([sys.executable, test], capture_output=True, text=True, check=False, env=environment)
    reports = re.split(r"\n\n", done.stderr)
    ours = [text for text in reports if re.search(r"^(Direct|Indirect) leak", text, re.M) and OURS.search(text)]
    tested = re.search(r"^OK", done.stderr, re.M)
    if ours or not tested or "ERROR: AddressSanitizer" in done.stderr or "runtime error" in done.stderr:
        print("\n\n".join(ours) if tested else done.stderr)
        return 1
    print(f"{len([text for text in reports if ' leak of ' in text])} leaks of Python's own, none of ours")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
