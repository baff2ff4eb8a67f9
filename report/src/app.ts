/// Puts the page together: what is loaded, what is shown of it, and how one part tells the others.

import type { EventData, ReportData, RunData } from './data/contract.ts';
import { flagText } from './data/contract.ts';
import { decodeRows, type Rows } from './data/rows.ts';
import { comparePoses, type Inspection } from './inspect.ts';
import { byRow, neighbour } from './motion/events.ts';
import { Kinematics } from './motion/kinematics.ts';
import { nominalRates, nominalTimes } from './motion/nominalTime.ts';
import { Playback } from './motion/playback.ts';
import { PlotStack } from './plot/PlotStack.ts';
import { layoutMachine, type PathExtent } from './scene/layout.ts';
import { MachineView, type CameraOn, type Side, type Stance, type UpAxis } from './scene/MachineView.ts';
import { Stretches } from './scene/stretches.ts';
import { Timeline } from './store.ts';
import { button, byId, element, iconButton, setText } from './ui/dom.ts';
import { EventList } from './ui/EventList.ts';
import { machineFigures, runFigures } from './ui/figures.ts';
import { count, exact, small } from './ui/format.ts';
import { helpDialog } from './ui/help.ts';
import { Jog } from './ui/Jog.ts';
import { listenToKeys, type KeyActions } from './ui/keys.ts';
import { listenToPrinting } from './ui/printing.ts';
import { buildFailures, buildHeader, buildSections, failuresOf } from './ui/skeleton.ts';
import { RowTable } from './ui/RowTable.ts';
import { ThemeSwitch } from './ui/ThemeSwitch.ts';
import { Transport } from './ui/Transport.ts';

const SIDES: readonly Side[] = ['oblique', 'front', 'right', 'top'];
const UPS: readonly UpAxis[] = ['z', 'x', 'y'];

/// Everything that belongs to a loaded report. A run without rows is shown as its machine alone.
export async function startApp(report: ReportData): Promise<void> {
  buildHeader(report);
  const run = report.run !== null && report.run.rows.count > 0 ? report.run : null;
  buildSections({ ...report, run });
  const figures = byId('figures-body');
  figures.append(
    ...(report.run === null ? [] : runFigures(report.machine, report.run)),
    ...machineFigures(report),
  );
  const app = run === null ? startMachine(report) : await startRun(report, run);
  window.trunnion = app;
  document.documentElement.dataset['ready'] = 'yes';
}

/// What machine pages and run pages have in common.
class Stage {
  readonly view: MachineView | null;
  readonly theme: ThemeSwitch;
  private readonly help: HTMLDialogElement;
  private readonly cameraButton: HTMLButtonElement;
  private readonly upButton: HTMLButtonElement;
  private cameraOn: CameraOn = 'machine';
  private up: UpAxis = 'z';
  private themeListeners: (() => void)[] = [];

  constructor(
    report: ReportData,
    kinematics: Kinematics,
    extents: ReadonlyMap<string, PathExtent>,
    isRun: boolean,
  ) {
    const layout = layoutMachine(report.machine, extents);
    this.size = layout.size;
    this.view = openView(() => new MachineView(report.machine, kinematics, layout, byId('stage')));
    this.help = helpDialog(isRun);
    document.body.append(this.help);
    this.cameraButton = button('', '', () => this.toggleCamera());
    this.upButton = button('', '', () => this.turnUp());
    this.theme = new ThemeSwitch((theme) => {
      this.view?.setTheme(theme);
      this.themeListeners.forEach((listener) => listener());
    });
    byId('header-tools').append(
      iconButton('theme', 'Light or dark', () => this.theme.toggle(), 'T'),
      button('?', 'Keys and pointer', () => this.help.showModal(), '?'),
    );
    if (this.view !== null) {
      byId('view-tools').append(
        this.cameraButton,
        this.upButton,
        button('Work', 'Close to the work', () => this.view?.closeUp(), 'G'),
        button('All', 'All of the machine', () => this.view?.fit(), 'F'),
      );
    }
    this.showChoices();
  }

  readonly size: number;

  onTheme(listener: () => void): void {
    this.themeListeners.push(listener);
    listener();
  }

  keys(): KeyActions {
    const turn = 6;
    const sides = SIDES.map((side, index): [string, () => void] => [
      String(index + 1),
      () => this.view?.look(side),
    ]);
    return {
      ...Object.fromEntries(sides),
      f: () => this.view?.fit(),
      g: () => this.view?.closeUp(),
      c: () => this.toggleCamera(),
      u: () => this.turnUp(),
      a: () => this.view?.orbit(-turn, 0),
      d: () => this.view?.orbit(turn, 0),
      w: () => this.view?.orbit(0, turn),
      s: () => this.view?.orbit(0, -turn),
      '+': () => this.view?.zoom(1.15),
      '=': () => this.view?.zoom(1.15),
      '-': () => this.view?.zoom(1 / 1.15),
      t: () => this.theme.toggle(),
      '?': () => this.help.showModal(),
    };
  }

  private toggleCamera(): void {
    this.cameraOn = this.cameraOn === 'machine' ? 'part' : 'machine';
    this.view?.setCameraOn(this.cameraOn);
    this.showChoices();
  }

  private turnUp(): void {
    this.up = UPS[(UPS.indexOf(this.up) + 1) % UPS.length]!;
    this.view?.setUp(this.up);
    this.showChoices();
  }

  private showChoices(): void {
    describe(this.cameraButton, `Camera: ${this.cameraOn}`, 'Camera on the machine or on the part', 'C');
    describe(this.upButton, `Up: ${this.up.toUpperCase()}`, 'Which axis points up', 'U');
  }
}

function describe(target: HTMLButtonElement, text: string, label: string, key: string): void {
  setText(target, text);
  target.setAttribute('aria-label', `${label}; now ${text}`);
  target.title = `${label} (${key})`;
}

/// Where the browser draws nothing in three dimensions, says so in its place.
function openView(make: () => MachineView): MachineView | null {
  try {
    return make();
  } catch {
    byId('stage').replaceChildren(
      element(
        'p',
        { class: 'notice', id: 'no-webgl' },
        'This browser offers no WebGL here, so the machine is not drawn. All else on this page works.',
      ),
    );
    return null;
  }
}

function eachFrame(action: (now: number) => void): void {
  const next = (now: number): void => {
    action(now);
    requestAnimationFrame(next);
  };
  requestAnimationFrame(next);
}

function startMachine(report: ReportData): Inspection {
  const kinematics = new Kinematics(report.machine);
  const stage = new Stage(report, kinematics, new Map(), false);
  const { view } = stage;
  const jog = new Jog(byId('jog-body'), report.machine, kinematics, stage.size, (jogged) =>
    view?.show({ ...jogged, row: 0 }),
  );
  view?.start({ ...jog.jogged, row: 0 }, stage.theme.theme);
  listenToKeys(stage.keys());
  listenToPrinting(stage.theme, view, []);
  eachFrame(() => view?.frame());
  return {
    kind: 'machine',
    rowCount: 0,
    things: () => view?.things() ?? [],
    still: () => view?.still() ?? null,
    setAxis: (index, value) => jog.set(index, value),
  };
}

async function startRun(report: ReportData, run: RunData): Promise<Inspection> {
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
    timeline.setHover(null);
    timeline.goTo(event.row);
    list.reveal(event);
    setText(announcement, `Row ${event.row + 1}, line ${event.line}: ${event.sentence}`);
  };
  const step = (by: number): void => {
    playback.pause();
    timeline.setHover(null);
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
function stanceAt(
  timeline: Timeline,
  rows: Rows,
  stretches: Stretches,
  kinematics: Kinematics,
): Stance {
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

function showReadout(
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
      (row) => `${small(rows.positionError[row]!)} ${unit}, ${small(rows.directionError[row]!)} deg`,
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
