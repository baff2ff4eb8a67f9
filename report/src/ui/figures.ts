/// What came of the run, in figures.

import type { MachineData, ReportData, RunData, WorstError } from '../data/contract.ts';
import { element } from '../base/dom.ts';
import { count, limitsText, short, small } from '../base/format.ts';

type Entry = readonly [string, string | Node];

function list(title: string, entries: readonly Entry[]): HTMLElement {
  const rows = entries.map(([name, value]) =>
    element('div', {}, element('dt', {}, name), element('dd', {}, value)),
  );
  return element('section', { class: 'figures-group' }, element('h3', {}, title), element('dl', {}, ...rows));
}

function code(text: string): HTMLElement {
  return element('code', {}, text);
}

export function machineFigures(report: ReportData): HTMLElement[] {
  const { machine } = report;
  return [
    list('Machine', [
      ['name', machine.name],
      ['file', code(machine.file)],
      ['SHA-256', code(machine.sha256)],
      ['lengths in', machine.lengthUnit],
      ['mounts', machine.mounts.map((mount) => `${mount.name} (${mount.kind})`).join(', ')],
      ['streams', machine.streams.map((one) => `${one.id}: ${one.tool} on ${one.part}`).join('; ')],
      ['program', `trunnion ${report.version}`],
    ]),
  ];
}

export function runFigures(machine: MachineData, run: RunData): HTMLElement[] {
  const { counts } = run;
  const kinds = new Map<string, number>();
  run.events.forEach((event) => kinds.set(event.kind, (kinds.get(event.kind) ?? 0) + 1));
  const many = (kind: string): string => count(kinds.get(kind) ?? 0);
  return [
    list('What came of it', [
      ['points', count(counts.points)],
      ['converged', count(counts.converged)],
      ['failed', count(counts.failed)],
      ['rows', count(counts.rows)],
      ['inserted between points', count(counts.inserted)],
      ['position off by at most', worst(run.worstPosition, machine.lengthUnit)],
      ['direction off by at most', worst(run.worstDirection, 'deg')],
      ['changes of branch', many('flip')],
      ['axes turned back', many('rewind')],
      ['passes of a pole', many('pole')],
      ['times at a limit', many('limit')],
      ['time to compute', `${short(run.seconds, 2)} s`],
    ]),
    ranges(machine, run),
    list('Toolpath', [
      ['file', code(run.toolpath.file)],
      ['SHA-256', code(run.toolpath.sha256)],
      ...run.operations.map((operation, index): Entry => {
        const tool = operation.toolNumber === null ? 'tool' : `tool ${operation.toolNumber}`;
        const length = `${short(operation.toolLength)} ${machine.lengthUnit}`;
        return [
          `operation ${index + 1}`,
          `${operation.name || 'without a name'}, from line ${operation.line}, ${tool} of ${length}`,
        ];
      }),
    ]),
    list('How it was asked', [
      ['command', element('code', { class: 'command' }, run.command.map(quoted).join(' '))],
      ...run.options.map((option): Entry => [option.name, optionText(option.value)]),
    ]),
    list(
      'What was written',
      run.outputs.map((output): Entry => [output.kind, code(output.path)]),
    ),
  ];
}

function worst(error: WorstError | null, unit: string): string {
  return error === null ? 'nothing to measure' : `${small(error.value)} ${unit}, at line ${error.line}`;
}

function optionText(value: unknown): string {
  if (value === '' || value === null) {
    return 'none';
  }
  return typeof value === 'object' ? JSON.stringify(value) : String(value);
}

/// As a shell takes it.
function quoted(word: string): string {
  return /^[\w@%+=:,./-]+$/.test(word) ? word : `'${word.replaceAll("'", `'\\''`)}'`;
}

/// What is used of each axis, as a bar between its limits.
function ranges(machine: MachineData, run: RunData): HTMLElement {
  const rows = run.ranges.map(({ axis: index, reached }) => {
    const axis = machine.axes[index]!;
    const unit = axis.type === 'linear' ? machine.lengthUnit : 'deg';
    const used = reached === null ? 'no row' : `${short(reached[0], 4)} to ${short(reached[1], 4)} ${unit}`;
    return element(
      'div',
      { class: 'range' },
      element('b', {}, axis.name),
      bar(axis.limits, reached),
      element('span', { class: 'used' }, used),
      element('span', { class: 'limits' }, limitsText(axis.limits)),
    );
  });
  return element('section', { class: 'figures-group' }, element('h3', {}, 'Travel used'), ...rows);
}

const NEARLY = 0.02; // of the travel, next to a limit

function bar(
  limits: readonly [number | null, number | null],
  reached: readonly [number, number] | null,
): HTMLElement {
  const made = element('span', { class: 'bar', 'aria-hidden': 'true' });
  if (reached === null) {
    return made;
  }
  const span = Math.max(reached[1] - reached[0], 1e-9);
  const low = limits[0] ?? Math.min(reached[0] - span * 0.1, (limits[1] ?? Infinity) - span);
  const high = limits[1] ?? Math.max(reached[1] + span * 0.1, low + span);
  const share = (value: number): number => Math.min(Math.max((value - low) / (high - low || 1), 0), 1);
  const from = share(reached[0]);
  const to = share(reached[1]);
  const used = element('i');
  used.style.left = `${from * 100}%`;
  used.style.width = `${Math.max(to - from, 0.004) * 100}%`;
  made.append(used);
  made.classList.toggle('open-low', limits[0] === null);
  made.classList.toggle('open-high', limits[1] === null);
  const isAtEnd = (limits[0] !== null && from < NEARLY) || (limits[1] !== null && to > 1 - NEARLY);
  made.classList.toggle('at-end', isAtEnd);
  return made;
}
