#!/usr/bin/python3
"""Reads the exports of every example back with real readers: the CSV with Python's csv module,
compared cell by cell with the JSON of the same stream; the Markdown with markdown-it's GFM tables;
the LaTeX checked for balanced environments and braces, and compiled when pdflatex is installed.
usage: export_readback.py OMFACTORY SOURCE_DIR"""
import csv
import io
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile

tool, source = sys.argv[1], sys.argv[2]
examples = sorted(f[:-4] for f in os.listdir(os.path.join(source, 'examples')) if f.endswith('.oms'))
failures = []


def render(name, fmt):
    return subprocess.run([tool, 'render', '--format', fmt, '--string-tables',
                           os.path.join(source, 'stringtables'),
                           os.path.join(source, 'examples', name + '.oms')],
                          capture_output=True, check=True).stdout.decode('utf-8')


def tables(node):
    if node['kind'] == 'table':
        yield node
    for child in node.get('children', []):
        yield from tables(child)


def check(condition, message):
    if not condition:
        failures.append(message)


for name in examples:
    doc = json.loads(render(name, 'json'))
    shown = list(tables(doc['outline']))

    # CSV: one row per cell, in the JSON's table order, with the same numbers and texts.
    rows = list(csv.DictReader(io.StringIO(render(name, 'csv'), newline='')))
    by_table = {}
    for row in rows:
        by_table.setdefault(row['table_id'], []).append(row)
    for table in shown:
        got = by_table.get(str(table['id']), [])
        check(len(got) == len(table['cells']),
              f'{name}: table {table["id"]} has {len(table["cells"])} cells, the CSV {len(got)} rows')
        key = lambda v: (v is None, v or 0.0)
        want = sorted((c['value'] for c in table['cells']), key=key)
        have = sorted((float(r['value']) if r['value'] else None for r in got), key=key)
        check(want == have, f'{name}: table {table["id"]} numbers differ')
        # The CSV's text is what a reader sees: the JSON's text, then any markers.
        texts = sorted(c['text'] for c in table['cells'])
        check(all(any(r['text'].startswith(t) for r in got) for t in texts), f'{name}: texts differ')
        for r in got:
            check(r['table'] == (table['title'] or table['label']), f'{name}: title {r["table"]}')

    # Markdown: every cell text of the JSON is a cell of some pipe table.
    try:
        from markdown_it import MarkdownIt
    except ImportError:
        MarkdownIt = None
    if MarkdownIt is not None:
        tokens = MarkdownIt('commonmark').enable('table').parse(render(name, 'markdown'))
        cells, inside = set(), False
        for token in tokens:
            if token.type in ('td_open', 'th_open'):
                inside = True
            elif token.type in ('td_close', 'th_close'):
                inside = False
            elif inside and token.type == 'inline':
                cells.add(re.sub(r'<sup>.*?</sup>', '', token.content).replace('\\', ''))
        check(sum(1 for t in tokens if t.type == 'table_open') >= len(shown), f'{name}: markdown tables')
        for table in shown:
            for cell in table['cells']:
                text = cell['text']
                check(text == '' or text in cells or any(text in c for c in cells),
                      f'{name}: markdown lacks cell "{text}"')

    # LaTeX: environments and braces balance once escaped braces are taken out.
    latex = render(name, 'latex')
    begins = re.findall(r'\\begin\{(\w+)\}', latex)
    ends = re.findall(r'\\end\{(\w+)\}', latex)
    check(sorted(begins) == sorted(ends), f'{name}: latex environments do not balance')
    bare = latex.replace('\\{', '').replace('\\}', '')
    check(bare.count('{') == bare.count('}'), f'{name}: latex braces do not balance')
    if shutil.which('pdflatex') and all(ord(c) < 0x2000 for c in latex):
        with tempfile.TemporaryDirectory() as folder:
            with open(os.path.join(folder, 'out.tex'), 'w', encoding='utf-8') as f:
                f.write(latex)
            run = subprocess.run(['pdflatex', '-interaction=nonstopmode', '-halt-on-error', 'out.tex'],
                                 cwd=folder, capture_output=True)
            check(run.returncode == 0, f'{name}: pdflatex failed: {run.stdout.decode(errors="replace")[-600:]}')

for failure in failures[:40]:
    print(failure)
print(f'{len(examples)} examples, {len(failures)} failures')
sys.exit(1 if failures else 0)
