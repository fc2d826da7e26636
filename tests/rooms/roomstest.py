#!/usr/bin/env python3
"""Shows that checkrooms.py finds what it should: small trees, each with one thing that the rooms forbid."""
import os
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
CHECK = os.path.join(HERE, '../../cmake/checkrooms.py')
with open(os.path.join(HERE, '../../cmake/rooms.txt'), encoding='utf-8') as ROOMS_FILE:
    ROOMS = ROOMS_FILE.read()

CASES = [  # name, further files, more lines of rooms.txt, what is reported (nothing: the tree is fine)
    ('what the table allows', {'nvcode2/gif/a.cpp': '#include "nvcode2/base/b.h"\n#include <vector>\n'}, '', ''),
    ('an include of a room above', {'nvcode2/gif/a.cpp': '\n  #  include "win/batch/b.h"\n'}, '',
     'nvcode2/gif/a.cpp:2: nvcode2/gif may not include win/batch: the format knows nothing of the application'),
    ('a folder that is no room', {'term/attic/a.h': ''}, '', 'cmake/rooms.txt has no line for term/attic'),
    ('two headers in a circle', {'wnatom/a.h': '#include "wnatom/b.h"', 'wnatom/b_win.cpp': '#include "wnatom/a.h"'},
     '', 'a circle of includes: wnatom/a -> wnatom/b -> wnatom/a'),
    ('two rooms in a circle', {}, 'term/x: term/y | x\nterm/y: term/x | y\n', 'term/x -> term/y -> term/x'),
    ('a misspelt room', {}, 'term/x: trem | x\n', 'term/x uses trem, which has no line'),
]


def main():
    for name, files, lines, wanted in CASES:
        with tempfile.TemporaryDirectory() as root:
            for path, text in {**files, 'cmake/rooms.txt': ROOMS + lines}.items():
                os.makedirs(os.path.join(root, os.path.dirname(path)), exist_ok=True)
                with open(os.path.join(root, path), 'w', encoding='utf-8') as file:
                    file.write(text)
            run = subprocess.run([sys.executable, CHECK, root], capture_output=True, text=True, check=False)
        if wanted not in run.stdout or run.returncode != bool(wanted):
            sys.exit(f'{name}: wanted "{wanted}", got status {run.returncode}:\n{run.stdout}{run.stderr}')


main()
