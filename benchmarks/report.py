"""Turns what the benchmark programs print into rows, tables and a plot."""

import math
import statistics
from pathlib import Path
from xml.sax.saxutils import escape

LIBRARY = 'zn'
LIMIT = 'limit '
EVEN = 1.05  # a ratio up to here counts as no slower

REASONS = Path(__file__).resolve().parent / 'peers/reasons.txt'


def load_reasons():
    """Why a row is above EVEN: lines of "row = reason"; a row that starts with "*" is a suffix."""
    reasons = {}
    for line in REASONS.read_text().splitlines():
        if line and not line.startswith('#'):
            row, reason = line.split(' = ', 1)
            reasons[row.strip()] = reason.strip()
    return reasons


def rows_from(results):
    """One row per piece of work, from Google Benchmark's JSON: the median CPU time of each
    contender in nanoseconds. (CPU time, so that a busy machine does not change the ratios.)"""
    times = {}
    for run in results['benchmarks']:
        if run['run_type'] != 'iteration':
            continue
        row, contender = run['run_name'].rsplit('/', 1)
        scale = {'ns': 1, 'us': 1e3, 'ms': 1e6, 's': 1e9}[run['time_unit']]
        times.setdefault(row, {}).setdefault(contender, []).append(run['cpu_time'] * scale)
    return [make_row(row, {name: statistics.median(runs) for name, runs in contenders.items()})
            for row, contenders in times.items()]


def make_row(name, medians):
    peers = {peer: time for peer, time in medians.items()
             if peer != LIBRARY and not peer.startswith(LIMIT)}
    limits = {peer[len(LIMIT):]: time for peer, time in medians.items() if peer.startswith(LIMIT)}
    best = min(peers, key=peers.get)
    return {'row': name, 'library ns': medians[LIBRARY], 'peers ns': peers, 'limits ns': limits,
            'best peer': best, 'ratio': medians[LIBRARY] / peers[best]}


def summary(rows):
    ratios = [row['ratio'] for row in rows]
    return {'rows': len(ratios), 'geometric mean': statistics.geometric_mean(ratios),
            'not slower': sum(ratio <= EVEN for ratio in ratios),
            'above 2': sum(ratio > 2 for ratio in ratios)}


def summary_text(rows):
    figures = summary(rows)
    return (f'{figures["rows"]} rows: geometric mean {figures["geometric mean"]:.2f}, '
            f'{figures["not slower"]} ({figures["not slower"] / figures["rows"]:.0%}) at or below '
            f'{EVEN}, {figures["above 2"]} above 2')


def time_text(nanoseconds):
    """Three significant digits."""
    for unit, size in (('s', 1e9), ('ms', 1e6), ('µs', 1e3), ('ns', 1)):
        if nanoseconds >= size or unit == 'ns':
            number = nanoseconds / size
            digits = max(0, 2 - int(math.floor(math.log10(max(number, 0.01)))))
            return f'{number:.{min(digits, 2)}f} {unit}'
    return ''


def others_text(row):
    """The other contenders, the quickest first."""
    others = sorted(row['peers ns'].items(), key=lambda entry: entry[1])[1:]
    return ', '.join(f'{name} {time_text(time)}' for name, time in others)


def limit_text(row):
    return ', '.join(f'{name} {time_text(time)}' for name, time in row['limits ns'].items())


def attach_reasons(rows, is_complete):
    """Puts the reason beside every row above EVEN; returns what is wrong with the reasons."""
    reasons = load_reasons()
    faults = []
    for row in rows:
        if row['ratio'] > EVEN:
            row['reason'] = reasons.get(row['row'], '')
            if not row['reason']:
                faults.append(f'"{row["row"]}" takes {row["ratio"]:.2f} times as long as '
                              f'{row["best peer"]}, and {REASONS.name} gives no reason')
    if is_complete:
        known = {row['row'] for row in rows}
        faults += [f'{REASONS.name} names a row that there is not: "{row}"'
                   for row in reasons if row not in known]
    return faults


def terminal_table(rows):
    width = max(len(row['row']) for row in rows)
    lines = [f'{"row":<{width}} {"library":>9} {"best peer":>9}  {"ratio":>5}  peer']
    for row in rows:
        others = '; '.join(filter(None, (others_text(row), limit_text(row) and
                                         'limit ' + limit_text(row))))
        lines.append(f'{row["row"]:<{width}} {time_text(row["library ns"]):>9} '
                     f'{time_text(row["peers ns"][row["best peer"]]):>9}  {row["ratio"]:5.2f}  '
                     f'{row["best peer"]}; {others}')
        if row.get('reason'):
            lines.append(f'{"":<{width}} {"":>9} {"":>9}         because: {row["reason"]}')
    return '\n'.join(lines)


def markdown_table(rows):
    lines = ['| work | library | best peer | ratio | others | limit |',
             '|---|--:|---|--:|---|---|']
    for row in rows:
        best = f'{row["best peer"]} {time_text(row["peers ns"][row["best peer"]])}'
        ratio = f'{row["ratio"]:.2f}'
        if row['ratio'] > EVEN:
            ratio = f'**{ratio}**'
        lines.append(f'| {row["row"]} | {time_text(row["library ns"])} | {best} | {ratio} | '
                     f'{others_text(row)} | {limit_text(row)} |')
    return '\n'.join(lines)


def markdown_reasons(rows):
    lines = ['| work | ratio | why |', '|---|--:|---|']
    slower = sorted((row for row in rows if row['ratio'] > EVEN),
                    key=lambda row: row['ratio'], reverse=True)
    return '\n'.join(lines + [f'| {row["row"]} | {row["ratio"]:.2f} | {row["reason"]} |'
                              for row in slower])


def plot(rows):
    """The ratios as bars on a logarithmic scale: to the left of the line the library is quicker."""
    line, text_width, plot_width, top = 17, 350, 400, 40
    least, most = 1 / 32, 32
    height = top + line * len(rows) + 30

    def x(ratio):
        clipped = min(max(ratio, least), most)
        return text_width + plot_width * math.log(clipped / least) / math.log(most / least)

    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{text_width + plot_width + 70}" '
             f'height="{height}" font-family="sans-serif" font-size="11">',
             '<rect width="100%" height="100%" fill="white"/>',
             f'<text x="{x(1)}" y="14" text-anchor="middle" font-weight="bold">'
             'time of the library / time of the best peer</text>']
    for tick in (1 / 16, 1 / 8, 1 / 4, 1 / 2, 1, 2, 4, 8, 16):
        label = f'{tick:g}' if tick >= 1 else f'1/{1 / tick:g}'
        parts.append(f'<line x1="{x(tick):.1f}" y1="{top - 6}" x2="{x(tick):.1f}" '
                     f'y2="{height - 24}" stroke="{"#333" if tick == 1 else "#ddd"}"/>'
                     f'<text x="{x(tick):.1f}" y="{top - 10}" text-anchor="middle" '
                     f'fill="#666">{label}</text>')
    for i, row in enumerate(rows):
        y = top + i * line
        ratio = row['ratio']
        left, right = sorted((x(ratio), x(1)))
        colour = '#3a7d44' if ratio <= EVEN else '#e0a030' if ratio <= 2 else '#c8553d'
        parts.append(f'<text x="{text_width - 8}" y="{y + 11}" text-anchor="end">'
                     f'{escape(row["row"])}</text>'
                     f'<rect x="{left:.1f}" y="{y + 2}" width="{max(right - left, 1):.1f}" '
                     f'height="{line - 5}" fill="{colour}"/>'
                     f'<text x="{max(right, x(1)) + 4:.1f}" y="{y + 11}" fill="#666">'
                     f'{ratio:.2f}</text>')
    parts.append(f'<text x="{text_width}" y="{height - 8}" fill="#666">'
                 f'{escape(summary_text(rows))}</text></svg>')
    return '\n'.join(parts) + '\n'


def replace_section(page, name, content):
    """Puts `content` between the markers of a section of the page."""
    begin, end = f'<!-- bench:{name} -->\n', f'<!-- /bench:{name} -->'
    head, found, rest = page.partition(begin)
    _, found_end, tail = rest.partition(end)
    if not found or not found_end:
        raise ValueError(f'the page has no section {name}')
    return head + begin + content.rstrip('\n') + '\n' + end + tail
