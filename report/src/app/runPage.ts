/// The page of a run: how its parts tell each other what is shown.

import { button, byId, element, setText } from '../base/dom.ts';
import type { EventData, ReportData, RunData } from '../data/contract.ts';
import { decodeRows, type Rows } from '../data/rows.ts';
import { byRow, neighbour } from '../motion/events.ts';
import { Kinematics } from '../motion/kinematics.ts';
import { nominalRates, nominalTimes } from '../motion/nominalTime.ts';
import { Playback } from '../motion/playback.ts';
import { Timeline } from '../motion/Timeline.ts';
import { PlotStack } from '../plot/PlotStack.ts';
import type { MachineView, Stance } from '../scene/MachineView.ts';
import { Stretches } from '../scene/stretches.ts';
import { EventList } from '../ui/EventList.ts';
import { listenToKeys } from '../ui/keys.ts';
import { listenToPrinting } from '../ui/printing.ts';
import { showReadout } from '../ui/readout.ts';
import { RowTable } from '../ui/RowTable.ts';
import { buildFailures, failuresOf } from '../ui/skeleton.ts';
import { Transport } from '../ui/Transport.ts';
import { comparePoses, type Inspection } from './inspect.ts';
import { Stage, eachFrame } from './Stage.ts';

export async function startRun(report: ReportData, run: RunData): Promise<Inspection> {
  const { machine } = report;
  const progress = element('progress', { max: '1', 'aria-label': 'Reading the rows' });
  byId('plots-body').append(progress);
  const began = performance.now();
  const rows = await decodeRows(run.rows, (share) => (progress.value = share));
  const decoded = performance.now() - began;
  progress.remove();

  const kinematics = new Kinematics(machine);
  const timeline = new Timeline({
    rowCount: rows.count,
    times: nominalTimes(rows, machine.axes, nominalRates(machine.lengthUnit)),
  });
  const stretches = new Stretches(run.operations, rows, kinematics);
  const stage = new Stage(report, kinematics, stretches.extents(rows), true);
  const { view } = stage;
  const last = rows.count - 1;
  const events = byRow(run.events.map((event) => ({ ...event, row: Math.min(event.row, last) })));

  const playback = new Playback(
    timeline.times,
    (place) => timeline.goTo(place),
    () => transport.showPlayback(),
  );
  const goTo = (event: EventData): void => {
    playback.pause();
    timeline.goTo(event.row);
    list.reveal(event);
    setText(announcement, `Row ${event.row + 1}, line ${event.line}: ${event.sentence}`);
  };
  const step = (by: number): void => {
    playback.pause();
    timeline.goTo(timeline.row + by);
  };
  const toEvent = (by: 1 | -1): void => {
    const event = neighbour(events, timeline.row, by);
    if (event !== undefined) {
      goTo(event);
    }
  };
  const playOrPause = (): void => {
    timeline.setHover(null);
    playback.isPlaying ? playback.pause() : playback.play(timeline.shownPlace);
  };

  const announcement = element('p', { class: 'announcement', role: 'status', 'aria-live': 'polite' });
  const failures = buildFailures(run, goTo);
  byId('content').prepend(...(failures === null ? [] : [failures]));
  byId('view').append(announcement);
  const transport = new Transport(
    byId('transport'),
    timeline,
    playback,
    { playOrPause, step, toEvent },
    events.length > 0,
  );
  const plots = new PlotStack(byId('plots-body'), machine, rows, events, timeline, goTo);
  addPlotTools(plots);
  const list = new EventList(byId('events-body'), byId('events-filter'), events, timeline, goTo);
  new RowTable(byId('rows-body'), machine, rows, timeline);
  showReadout(byId('readout'), report, rows, stretches, timeline);

  const stance = (): Stance => stanceAt(timeline, rows, stretches, kinematics);
  view?.addPaths(rows, stretches.all, failuresOf(run));
  view?.start(stance(), stage.theme.theme);
  timeline.subscribe(() => view?.show(stance()));
  hoverOnView(view, timeline, playback);
  stage.onTheme(() => plots.setTheme(stage.theme.theme));
  listenToPrinting(stage.theme, view, events);
  listenToKeys({
    ...stage.keys(),
    ' ': playOrPause,
    ArrowLeft: () => step(-1),
    ArrowRight: () => step(1),
    'Shift+ArrowLeft': () => step(-10),
    'Shift+ArrowRight': () => step(10),
    Home: () => step(-rows.count),
    End: () => step(rows.count),
    n: () => toEvent(1),
    p: () => toEvent(-1),
    ',': () => playback.faster(-1),
    '.': () => playback.faster(1),
  });
  eachFrame((now) => {
    playback.frame(now);
    view?.frame();
  });
  return {
    kind: 'run',
    rowCount: rows.count,
    decodeMilliseconds: decoded,
    row: () => timeline.row,
    shownRow: () => timeline.shownRow,
    isPlaying: () => playback.isPlaying,
    goTo: (row) => timeline.goTo(row),
    things: () => view?.things() ?? [],
    still: () => view?.still() ?? null,
    frames: () => view?.frames ?? 0,
    plotPoints: () => plots.drawnPoints(),
    comparePoses: () => comparePoses(kinematics, rows, stretches),
  };
}

/// Between two rows the axes move evenly.
function stanceAt(timeline: Timeline, rows: Rows, stretches: Stretches, kinematics: Kinematics): Stance {
  const place = timeline.shownPlace;
  const row = Math.floor(place);
  const share = place - row;
  const values = kinematics.initialValues();
  rows.axes.forEach((axis, column) => {
    const joint = rows.joints[column]!;
    values[axis] = share > 0 ? joint[row]! + (joint[row + 1]! - joint[row]!) * share : joint[row]!;
  });
  const stretch = stretches.at(row);
  return { values, place: stretch.place, toolLength: stretch.toolLength, row };
}

function addPlotTools(plots: PlotStack): void {
  let isByTime = true;
  const toggle = button('', '', () => {
    isByTime = !isByTime;
    plots.setAbscissa(isByTime ? 'time' : 'row');
    show();
  });
  const show = (): void => {
    setText(toggle, isByTime ? 'Over nominal seconds' : 'Over rows');
    toggle.setAttribute('aria-label', `Plots over time or rows; now ${isByTime ? 'time' : 'rows'}`);
  };
  show();
  byId('plots-tools').append(
    toggle,
    button('Whole run', 'Show the whole run in the plots', () => plots.reset()),
  );
}

function hoverOnView(view: MachineView | null, timeline: Timeline, playback: Playback): void {
  if (view === null) {
    return;
  }
  const under = (event: PointerEvent | MouseEvent): number | null => {
    const { left, top } = view.canvas.getBoundingClientRect();
    return view.pick(event.clientX - left, event.clientY - top);
  };
  let pressed = { x: 0, y: 0 };
  view.canvas.addEventListener('pointerdown', (event) => {
    pressed = { x: event.clientX, y: event.clientY };
  });
  view.canvas.addEventListener('pointermove', (event) => {
    if (event.buttons === 0 && !playback.isPlaying) {
      timeline.setHover(under(event));
    }
  });
  view.canvas.addEventListener('pointerleave', () => timeline.setHover(null));
  view.canvas.addEventListener('click', (event) => {
    const row = under(event);
    if (row !== null && Math.hypot(event.clientX - pressed.x, event.clientY - pressed.y) < 4) {
      timeline.goTo(row);
    }
  });
}
