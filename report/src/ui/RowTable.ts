/// The rows of the run as a table.

import { flagText, Flag, type MachineData } from '../data/contract.ts';
import type { Rows } from '../data/rows.ts';
import type { Timeline } from '../motion/Timeline.ts';
import { element, setText } from '../base/dom.ts';
import { exact, short, small } from '../base/format.ts';
import { VirtualList } from './VirtualList.ts';

interface Column {
  readonly head: string;
  readonly unit: string;
  readonly text: (row: number) => string;
  readonly width: number; // in characters
}

const ROW_HEIGHT = 24;

export class RowTable {
  private readonly list: VirtualList;
  private readonly columns: readonly Column[];

  constructor(
    holder: HTMLElement,
    machine: MachineData,
    private readonly rows: Rows,
    private readonly timeline: Timeline,
  ) {
    this.columns = columnsOf(machine, rows);
    holder.style.setProperty('--columns', this.columns.map((one) => `${one.width + 2}ch`).join(' '));
    holder.setAttribute('role', 'table');
    holder.setAttribute('aria-label', 'Rows of the motion');
    holder.setAttribute('aria-rowcount', String(rows.count + 1));
    holder.append(this.head());
    this.list = new VirtualList(holder, rows.count, {
      height: ROW_HEIGHT,
      make: () => this.makeRow(),
      fill: (row, index) => this.fill(row, index),
    });
    timeline.subscribe(() => this.follow(holder));
    holder.addEventListener('pointerleave', () => timeline.setHover(null));
    this.list.render();
  }

  /// A row under the pointer is in sight already.
  private follow(holder: HTMLElement): void {
    if (holder.matches(':hover') && this.timeline.hover !== null) {
      this.list.render();
    } else {
      this.list.reveal(this.timeline.shownRow);
    }
  }

  private head(): HTMLElement {
    const head = element('div', { role: 'row', class: 'head' });
    for (const column of this.columns) {
      const unit = column.unit === '' ? [] : [element('span', { class: 'unit' }, ` ${column.unit}`)];
      head.append(element('span', { role: 'columnheader' }, column.head, ...unit));
    }
    return head;
  }

  private makeRow(): HTMLElement {
    const row = element('div', { role: 'row', class: 'row' });
    this.columns.forEach(() => row.append(element('span', { role: 'cell' })));
    row.addEventListener('pointerenter', () => this.timeline.setHover(Number(row.dataset['row'])));
    row.addEventListener('click', () => this.timeline.goTo(Number(row.dataset['row'])));
    return row;
  }

  private fill(row: HTMLElement, index: number): void {
    if (row.dataset['row'] !== String(index)) {
      row.dataset['row'] = String(index);
      row.setAttribute('aria-rowindex', String(index + 2));
      this.columns.forEach((column, k) => setText(row.children[k]!, column.text(index)));
      row.classList.toggle('rapid', (this.rows.flags[index]! & Flag.rapid) !== 0);
      row.classList.toggle('failed', (this.rows.flags[index]! & Flag.failed) !== 0);
      row.classList.toggle('inserted', (this.rows.flags[index]! & Flag.inserted) !== 0);
    }
    const isShown = index === this.timeline.shownRow;
    row.classList.toggle('shown', isShown);
    row.setAttribute('aria-current', String(isShown));
  }
}

function columnsOf(machine: MachineData, rows: Rows): Column[] {
  const decimals = (name: string): number => rows.decimals[name] ?? 0;
  const whole = (head: string, values: Float64Array, plus: number): Column =>
    column(head, '', values, (value) => String(value + plus));
  const exactly = (head: string, unit: string, name: string, values: Float64Array): Column =>
    column(head, unit, values, (value) => exact(value, decimals(name)));
  const unit = machine.lengthUnit;
  const rowNumbers: Column = {
    head: 'row',
    unit: '',
    text: (row) => String(row + 1),
    width: Math.max(String(rows.count).length, 3),
  };
  return [
    rowNumbers,
    whole('line', rows.line, 0),
    whole('point', rows.point, 1),
    ...rows.axes.map((axis, k) => {
      const { name, type } = machine.axes[axis]!;
      return exactly(name, type === 'linear' ? unit : 'deg', `joint${k}`, rows.joints[k]!);
    }),
    ...['x', 'y', 'z'].map((name, k) => exactly(name, unit, name, rows.position[k]!)),
    ...['i', 'j', 'k'].map((name, k) => exactly(name, '', name, rows.direction[k]!)),
    column('feed', `${unit}/min`, rows.feed, (value) => (value === 0 ? '' : short(value, 3))),
    column('off by', unit, rows.positionError, small),
    column('off by', 'deg', rows.directionError, small),
    whole('branch', rows.branch, 0),
    { head: 'flags', unit: '', text: (row) => flagText(rows.flags[row]!), width: 22 },
  ];
}

function column(head: string, unit: string, values: Float64Array, text: (value: number) => string): Column {
  let low = 0;
  let high = 0;
  for (let row = 1; row < values.length; ++row) {
    low = values[row]! < values[low]! ? row : low;
    high = values[row]! > values[high]! ? row : high;
  }
  const longest = values.length === 0 ? 0 : Math.max(...[low, high].map((row) => text(values[row]!).length));
  const titled = head.length + (unit === '' ? 0 : unit.length + 1);
  return {
    head,
    unit,
    text: (row) => text(values[row]!),
    width: Math.max(longest, titled, text === small ? 9 : 0),
  };
}
