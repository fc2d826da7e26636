#!/usr/bin/env python3
"""Checks every include of the program against cmake/rooms.txt, and that includes run in no circle.

    cmake/checkrooms.py [ROOT]     prints each include that is not allowed, and why; status 1 if any
    cmake/checkrooms.py --write    brings the table at the end of docs/architecture.md up to date
"""
import os
import re
import sys

INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"')
TOPS = ('nvcode2', 'wnatom', 'win', 'term')


def read_rooms(root):
    rooms = {}
    with open(os.path.join(root, 'cmake/rooms.txt'), encoding='utf-8') as file:
        for line in file:
            if match := re.match(r'([a-z]\S*): ([^|]*)\| (.*)', line):
                rooms[match[1]] = (match[2].split(), match[3])
    return rooms


def find_circle(rooms, room, path=()):
    """The first way from a room back to itself, as a list of rooms; None when there is none."""
    if room in path:
        return list(path[path.index(room):]) + [room]
    for used in rooms[room][0]:
        if circle := find_circle(rooms, used, path + (room,)):
            return circle
    return None


def component(file):
    """A header with its sources: nvcode2/file/nvfile for nvfile.h, nvfile.cpp and nvfile_posix.cpp."""
    return re.sub(r'(_posix|_win)?\.(h|cpp)$', '', file)


def find_file_circle(includes, file, done, path):
    if file in path:
        return path[path.index(file):] + [file]
    if file in done:
        return None
    for used in includes.get(file, ()):
        if circle := find_file_circle(includes, used, done, path + [file]):
            return circle
    done.add(file)
    return None


def list_sources(root):
    for top in TOPS:
        for folder, _, names in os.walk(os.path.join(root, top)):
            for name in sorted(names):
                if name.endswith(('.h', '.cpp')):
                    yield os.path.relpath(os.path.join(folder, name), root).replace(os.sep, '/')


def check_includes(root, rooms):
    includes = {}
    for file in list_sources(root):
        room = os.path.dirname(file)
        if room not in rooms:
            yield f'{file}: not in a room: cmake/rooms.txt has no line for {room}'
            continue
        allowed, why = rooms[room]
        with open(os.path.join(root, file), encoding='utf-8') as source:
            for number, line in enumerate(source, 1):
                match = INCLUDE.match(line)
                if not match or not match[1].startswith(TOPS):
                    continue
                if component(match[1]) != component(file):
                    includes.setdefault(component(file), []).append(component(match[1]))
                used = os.path.dirname(match[1])
                if used != room and used not in allowed:
                    yield f'{file}:{number}: {room} may not include {used}: {why}\n    {line.strip()}'
    done = set()
    for file in sorted(includes):
        if circle := find_file_circle(includes, file, done, []):
            yield 'a circle of includes: ' + ' -> '.join(circle)
            return


def make_table(rooms):
    rows = ['| Room | may include | because |', '|---|---|---|']
    for room, (used, why) in rooms.items():
        folders = {}
        for name in used:
            folders.setdefault(os.path.dirname(name), []).append(os.path.basename(name))
        parts = [f'{folder}: {", ".join(names)}' if folder else ", ".join(names) for folder, names in folders.items()]
        rows.append(f'| {room} | {"; ".join(parts) or "nothing"} | {why} |')
    return '\n'.join(rows) + '\n'


def check_page(root, rooms, writes):
    """docs/architecture.md ends with the table of rooms."""
    name = os.path.join(root, 'docs/architecture.md')
    if not os.path.exists(name):
        return
    with open(name, encoding='utf-8') as file:
        page = file.read()
    right = page[:page.index('| Room |')] + make_table(rooms)
    if right != page and not writes:
        yield 'docs/architecture.md: its table is out of date: cmake/checkrooms.py --write'
    elif right != page:
        with open(name, 'w', encoding='utf-8') as file:
            file.write(right)


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    writes = sys.argv[1:] == ['--write']
    root = os.path.join(here, '..') if writes or len(sys.argv) < 2 else sys.argv[1]
    rooms = read_rooms(root)
    faults = []
    for room, (used, _) in rooms.items():
        faults += [f'cmake/rooms.txt: {room} uses {name}, which has no line' for name in used if name not in rooms]
    if not faults:
        circles = {' -> '.join(circle) for room in rooms if (circle := find_circle(rooms, room))}
        faults = [f'cmake/rooms.txt: rooms in a circle: {circle}' for circle in sorted(circles)]
        faults += [*check_includes(root, rooms), *check_page(root, rooms, writes)]
    print('\n'.join(faults) or f'{len(rooms)} rooms, every include allowed')
    return 1 if faults else 0


sys.exit(main())
