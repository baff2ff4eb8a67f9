/// The sections of the page, in reading order.

import type { ReportData, RunData } from '../data/contract.ts';
import type { EventData } from '../data/contract.ts';
import { byId, element } from '../base/dom.ts';
import { count } from '../base/format.ts';

function section(id: string, title: string, ...children: Node[]): HTMLElement {
  const heading = element('h2', { id: `${id}-title` }, title);
  return element(
    'section',
    { id, class: 'card', 'aria-labelledby': `${id}-title` },
    element('div', { class: 'card-head' }, heading, element('div', { class: 'tools', id: `${id}-tools` })),
    ...children,
  );
}

export function buildHeader(report: ReportData): void {
  const { machine, run } = report;
  document.title = run === null ? machine.name : `${machine.name}: ${fileName(run.toolpath.file)}`;
  const what =
    run === null
      ? `machine, ${machine.axes.length} axes`
      : `${fileName(run.toolpath.file)} on ${fileName(machine.file)}`;
  byId('header').append(
    element('div', { class: 'title' }, element('h1', {}, machine.name), element('p', {}, what)),
    ...(run === null ? [] : [verdict(run)]),
    element('div', { class: 'tools', id: 'header-tools' }),
  );
}

function fileName(path: string): string {
  return path.split('/').at(-1) ?? path;
}

export function failuresOf(run: RunData): EventData[] {
  return run.events.filter((event) => event.kind === 'failed');
}

export function hasFailed(run: RunData): boolean {
  return run.counts.failed > 0 || failuresOf(run).length > 0;
}

function verdict(run: RunData): HTMLElement {
  const { counts } = run;
  return hasFailed(run)
    ? element(
        'p',
        { class: 'verdict bad' },
        `Failed: ${count(counts.failed)} of ${count(counts.points)} points not reached`,
      )
    : element('p', { class: 'verdict good' }, `All ${count(counts.points)} points reached`);
}

const FAILURES_SHOWN = 5;

/// What failed and where, before everything else.
export function buildFailures(run: RunData, goTo: (event: EventData) => void): HTMLElement | null {
  if (!hasFailed(run)) {
    return null;
  }
  const failures = failuresOf(run);
  const list = element('ul');
  for (const event of failures.slice(0, FAILURES_SHOWN)) {
    const place = element('button', { type: 'button', class: 'link' }, `line ${event.line}`);
    place.addEventListener('click', () => goTo(event));
    list.append(element('li', {}, place, `: ${event.sentence}`));
  }
  const more = failures.length - FAILURES_SHOWN;
  if (more > 0) {
    list.append(element('li', {}, `and ${count(more)} more, in the list of events`));
  }
  const { counts } = run;
  return element(
    'section',
    { id: 'failures', class: 'failures', 'aria-labelledby': 'failures-title' },
    element(
      'h2',
      { id: 'failures-title' },
      `This run failed: ${count(counts.failed)} of ${count(counts.points)} points are not reached`,
    ),
    list,
  );
}

export function buildSections(report: ReportData): void {
  const view = section('view', 'The machine', element('div', { id: 'stage' }));
  const figures = section('figures', 'Figures', element('div', { id: 'figures-body' }));
  const main = byId('content');
  if (report.run === null) {
    view.append(legend(false));
    const jog = section('jog', 'Axes', element('div', { id: 'jog-body' }));
    main.append(element('div', { class: 'columns' }, view, jog), figures);
    return;
  }
  view.append(
    element('div', { id: 'transport', role: 'group', 'aria-label': 'Playing' }),
    element('dl', { id: 'readout', 'aria-label': 'The row that is shown' }),
    legend(true),
  );
  const plots = section('plots', 'The axes over the run', element('div', { id: 'plots-body' }));
  const events = section(
    'events',
    'Events',
    element('div', { id: 'events-filter' }),
    element('div', { id: 'events-body', tabindex: '0', role: 'group', 'aria-label': 'List of events' }),
    element('ol', { id: 'events-print' }),
  );
  const rows = section('rows', 'Rows', element('div', { id: 'rows-body', tabindex: '0' }));
  main.append(
    element('div', { class: 'columns' }, view, plots),
    element('div', { class: 'columns lists' }, events, rows),
    figures,
  );
}

function legend(hasPath: boolean): HTMLElement {
  const lines = [
    ['done', 'done'],
    ['ahead', 'to come'],
    ['rapid', 'rapid'],
  ].map(([name, text]) => element('span', {}, element('i', { class: `line ${name}` }), text!));
  const arrows = 'arrows: the way the body moves for a positive value';
  return element('p', { class: 'legend' }, ...(hasPath ? lines : []), element('span', {}, arrows));
}
