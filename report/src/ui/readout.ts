/// What is known of the row that is shown.

import { element, setText } from '../base/dom.ts';
import { count, exact, small } from '../base/format.ts';
import { flagText, type ReportData } from '../data/contract.ts';
import type { Rows } from '../data/rows.ts';
import type { Timeline } from '../motion/Timeline.ts';
import type { Stretches } from '../scene/stretches.ts';

export function showReadout(
  holder: HTMLElement,
  report: ReportData,
  rows: Rows,
  stretches: Stretches,
  timeline: Timeline,
): void {
  const unit = report.machine.lengthUnit;
  const decimals = (name: string): number => rows.decimals[name] ?? 3;
  const at = (columns: readonly Float64Array[], row: number, digits: number): string =>
    columns.map((column) => exact(column[row]!, digits)).join('  ');
  const texts: readonly (readonly [string, (row: number) => string])[] = [
    ['line', (row) => count(rows.line[row]!)],
    ['point', (row) => count(rows.point[row]! + 1)],
    ['operation', (row) => stretches.operationAt(row).name || 'without a name'],
    ['branch', (row) => String(rows.branch[row]!)],
    ['flags', (row) => flagText(rows.flags[row]!) || 'none'],
    ['feed', (row) => (rows.feed[row] === 0 ? 'none' : `${small(rows.feed[row]!)} ${unit}/min`)],
    [
      'off by',
      (row) =>
        `${error(rows.positionError[row]!, decimals('positionError'))} ${unit}, ` +
        `${error(rows.directionError[row]!, decimals('directionError'))} deg`,
    ],
    [`x y z [${unit}]`, (row) => at(rows.position, row, Math.min(decimals('x'), 4))],
    ['i j k', (row) => at(rows.direction, row, Math.min(decimals('i'), 6))],
  ];
  const values = texts.map(([name]) => {
    const value = element('dd');
    holder.append(element('div', {}, element('dt', {}, name), value));
    return value;
  });
  const show = (): void =>
    texts.forEach(([, text], index) => setText(values[index]!, text(timeline.shownRow)));
  timeline.subscribe(show);
  show();
}

/// Of what is less than the last decimal no more is known.
function error(value: number, decimals: number): string {
  return value === 0 ? `under ${small(10 ** -decimals)}` : small(value);
}
