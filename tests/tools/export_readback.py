#!/usr/bin/python3
"""Reads the exports of every example back with real readers: the CSV with Python's csv module,
compared cell by cell with the JSON of the same stream; the Markdown with markdown-it's GFM tables;
the LaTeX checked for balanced environments and braces, and compiled when pdflatex is installed;
the workbook with openpyxl: sheet names, and for the crosstabs and imputation examples every number
with its decimals, every text and the merged ranges of spanning labels.
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


def render(name, fmt, decode=True):
    out = subprocess.run([tool, 'render', '--format', fmt, '--string-tables',
                          os.path.join(source, 'stringtables'),
                          os.path.join(source, 'examples', name + '.oms')],
                         capture_output=True, check=True).stdout
    return out.decode('utf-8') if decode else out


def leaves(category):
    return sum(leaves(c) for c in category['children']) if category['children'] else 1


def spans(table):
    """(label, extent along its axis) of every row and column label that spans positions."""
    for axis in ('rows', 'columns'):
        dims = [d for d in table['dimensions'] if d['axis'] == axis and not d.get('hideCategories')]
        for k, dim in enumerate(dims):
            inner = 1
            for d in dims[k + 1:]:
                inner *= sum(leaves(c) for c in d['categories'])
            todo = list(dim['categories'])
            while todo:
                category = todo.pop()
                todo.extend(category['children'])
                if leaves(category) * inner > 1 and category['label'] and not category.get('hidden'):
                    yield axis, category['label'], leaves(category) * inner


def decimals(pattern):
    if pattern.startswith('General'):
        return None
    head = pattern.split('"')[0].split('E')[0]
    return len(head.split('.')[1].rstrip('\\%')) if '.' in head else 0


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

    # Excel: the workbook opens; sheet names are valid and unique; for the crosstabs and
    # imputation examples every number of the JSON is a number with the decimals its text shows,
    # every text is there, and each spanning label is merged over its categories.
    try:
        import openpyxl
    except ImportError:
        openpyxl = None
    if openpyxl is not None:
        book = openpyxl.load_workbook(io.BytesIO(render(name, 'xlsx', decode=False)))
        titles = [ws.title for ws in book.worksheets]
        check(len({t.lower() for t in titles}) == len(titles), f'{name}: sheet names repeat: {titles}')
        check(all(0 < len(t) <= 31 and not set(t) & set('[]:*?/\\') for t in titles), f'{name}: bad sheet names {titles}')
        if name.startswith(('crosstabs', 'mi_')):
            numbers, texts, merged = [], set(), set()
            for ws in book.worksheets:
                for row in ws.iter_rows():
                    for c in row:
                        if isinstance(c.value, (int, float)) and not isinstance(c.value, bool):
                            numbers.append((float(c.value), decimals(c.number_format)))
                        elif isinstance(c.value, str):
                            texts.add(c.value)
                for r in ws.merged_cells.ranges:
                    label = re.sub(r'\[.*\]$', '', str(ws.cell(r.min_row, r.min_col).value))
                    merged.add(('rows', label, r.max_row - r.min_row + 1))
                    merged.add(('columns', label, r.max_col - r.min_col + 1))
            for table in shown:
                for cell in table['cells']:
                    if cell.get('hidden') or not cell['text']:
                        continue
                    if cell['value'] is None:
                        check(any(t.startswith(cell['text']) for t in texts), f'{name}: xlsx lacks text "{cell["text"]}"')
                        continue
                    shown_decimals = re.match(r'-?\$?[\d,]*(?:\.(\d+))?', cell['text']).group(1) or ''
                    # The workbook keeps 16 significant digits.
                    v, tolerance = cell['value'], abs(cell['value']) * 1e-15
                    have = {d for n, d in numbers if abs(n - v) <= tolerance}
                    check(len(shown_decimals) in have or None in have,
                          f'{name}: xlsx lacks {cell["value"]} with {len(shown_decimals)} decimals ({cell["text"]})')
                for span in spans(table):
                    check(span in merged, f'{name}: xlsx does not merge {span}')

for failure in failures[:40]:
    print(failure)
print(f'{len(examples)} examples, {len(failures)} failures')
sys.exit(1 if failures else 0)
