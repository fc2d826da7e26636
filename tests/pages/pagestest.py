#!/usr/bin/env python3
"""Checks what the pages name: links, paths, classes and options must exist, limits be those of the code. Paths and
options are looked for in `code`, classes in docs/architecture.md only. And that sources say nothing to people that
belongs into the list of texts, or stands there already."""
import os
import re
import sys

ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), '../..')
PAGES = ['README.md', 'CONTRIBUTING.md', 'CHANGELOG.md', 'docs/architecture.md', 'docs/guide.md', 'docs/options.md',
         'docs/performance.md', 'docs/quality.md']
TOPS = ('nvcode2', 'wnatom', 'win', 'term', 'tests', 'bench', 'fuzz', 'samples', 'packaging', 'docs', 'cmake', '.ci')
COLOURS = re.compile(r'at most (\d+)\s(?:colours|of\sthem|stay)')  # held to km_MostColours
OTHERS = {'--colors', '--lossy', '--prefix'}  # of other programs that the pages speak of


def read(name):
    with open(os.path.join(ROOT, name), encoding='utf-8') as file:
        return file.read()


def exists(path):
    return any(os.path.exists(os.path.join(ROOT, path + end)) for end in ('', '.h', '.cpp', '.py'))


def find_classes():
    text = ''.join(read(os.path.relpath(os.path.join(folder, name), ROOT)) for top in TOPS[:4]
                   for folder, _, names in os.walk(os.path.join(ROOT, top)) for name in names if name.endswith('.h'))
    return set(re.findall(r'^(?:class|struct) (\w+)(?: final)?(?: :[^;]*)?\s*{', text, re.M))


def check(page, options, classes, colours):
    text = read(page)
    for number in COLOURS.findall(text):
        if number != colours:
            yield f'names a limit of {number} colours'
    for link in re.findall(r'\]\((?!http)([^)#]+)', text):
        if not os.path.exists(os.path.join(ROOT, os.path.dirname(page), link)):
            yield f'links to {link}'
    for code in re.findall(r'`([^`\n]+)`', re.sub(r'```.*?```', '', text, flags=re.S)):
        if re.match(r'[.\w/]+$', code) and code.split('/')[0] in TOPS and not exists(code):
            yield f'names the path {code}'
        for option in re.findall(r'(?<![\w-])--[a-z][\w-]+', '' if 'cmake' in code else code):
            if option not in options | OTHERS:
                yield f'names the option {option}'
        if page.endswith('architecture.md') and re.match(r'(Nv|Wn|Pv|Mizer|Term|KApp|Session)[A-Z]\w+$', code) \
                and code not in classes:
            yield f'names the class {code}'


def find_literals(tops):
    for top in tops:
        for folder, _, names in os.walk(os.path.join(ROOT, top)):
            for name in sorted(names):
                if name.endswith(('.h', '.cpp', '.rc')):
                    path = os.path.relpath(os.path.join(folder, name), ROOT)
                    code = re.sub(r'(?s:/\*.*?\*/)|//.*|#include.*', '', read(path))
                    for literal in re.findall(r'(?<!\')"((?:[^"\\\n]|\\.)*)"', code):
                        yield path, literal


def check_texts():
    listed = re.findall(r'^\d+ \w+ "(.*)"$', read('win/texts/texts.txt'), re.M)
    pieces = {piece.strip(' .:;,') for text in listed for piece in text.split('{}')}
    for path, literal in find_literals(TOPS[:4]):
        if literal in listed and ' ' in literal or literal.strip().count(' ') > 1 and literal.strip(' .:;,') in pieces - {''}:
            yield f'{path}: "{literal}": said in win/texts/texts.txt'
    own = ('win/batch/mizerpreferences.cpp',)  # the words of the terminal's pages
    for path, literal in find_literals(['win/batch', 'win/optimizer', 'win/session', 'win/desktop']):
        if re.search(r'[a-z] [a-z]{2}', literal) and '%' not in literal and path not in own:
            yield f'{path}: "{literal}": belongs into win/texts/texts.txt'


def main():
    options = set(re.findall(r'`(--[\w-]+)', read('docs/options.md')))
    classes = find_classes()
    colours = re.search(r'km_MostColours = (\d+)', read('win/optimizer/base/pvoptsettings.h')).group(1)
    faults = [f'{page}: {fault}, which does not exist' for page in PAGES
              for fault in check(page, options, classes, colours)]
    faults += [f'{page} says no limit of colours' for page in ('README.md', 'docs/guide.md')
               if not COLOURS.search(read(page))]
    faults += check_texts()
    sys.exit('\n'.join(faults) or 0)


main()
