/// The plots of all axes, one under the other over the same stretch of the run, and the events above.

import { Flag, type EventData, type MachineData } from '../data/contract.ts';
import type { Rows } from '../data/rows.ts';
import { lowerBound } from '../motion/search.ts';
import { EVENT_COLORS, type Theme } from '../base/palette.ts';
import type { Timeline } from '../motion/Timeline.ts';
import { element } from '../base/dom.ts';
import { EVENT_SHAPES, EVENT_TITLES } from '../base/eventMarks.ts';
import { AxisPlot, LEFT, RIGHT, type Shared } from './AxisPlot.ts';
import { flaggedSpans, pixelBounds } from './decimate.ts';

export type Abscissa = 'time' | 'row';

const LANE_HEIGHT = 18;
const NEAR = 8; // [px]

export class PlotStack {
  private shared: Shared;
  private plots: AxisPlot[] = [];
  private readonly lane = element('canvas', { class: 'lane', role: 'img' });
  private readonly plotHolder = element('div', { class: 'plots' });

  constructor(
    private readonly holder: HTMLElement,
    private readonly machine: MachineData,
    private readonly rows: Rows,
    private readonly events: readonly EventData[], // by row
    private readonly timeline: Timeline,
    private readonly goTo: (event: EventData) => void,
  ) {
    this.lane.setAttribute('aria-label', 'Events along the run; the list of events has them in words');
    holder.append(this.lane, this.plotHolder);
    this.shared = this.sharedFor('time', 'light');
    this.makePlots();
    this.listenOnLane();
    timeline.subscribe(() => this.show());
    new ResizeObserver(() => this.resize()).observe(holder);
  }

  setAbscissa(abscissa: Abscissa): void {
    this.shared = this.sharedFor(abscissa, this.shared.theme);
    this.makePlots();
  }

  setTheme(theme: Theme): void {
    this.shared.theme = theme;
    this.plots.forEach((plot) => plot.redraw());
    this.drawLane();
  }

  zoom(from: number, to: number): void {
    this.shared.from = Math.max(from, this.shared.x[0]!);
    this.shared.to = Math.min(to, this.shared.x.at(-1)!);
    this.update();
  }

  reset(): void {
    this.shared.from = this.shared.x[0]!;
    this.shared.to = this.shared.x.at(-1)!;
    this.update();
  }

  drawnPoints(): number[] {
    return this.plots.map((plot) => plot.drawnPoints());
  }

  private sharedFor(abscissa: Abscissa, theme: Theme): Shared {
    const { rows, timeline } = this;
    const x =
      abscissa === 'time' ? timeline.times : Float64Array.from({ length: rows.count }, (_, i) => i + 1);
    return {
      x,
      from: x[0]!,
      to: x.at(-1)!,
      bounds: new Uint32Array(1),
      rapids: [],
      failed: [],
      events: this.events.map((event) => ({ x: x[event.row]!, event })),
      theme,
    };
  }

  private makePlots(): void {
    this.plotHolder.replaceChildren();
    const last = this.rows.axes.length - 1;
    this.plots = this.rows.axes.map((axisIndex, column) => {
      const axis = this.machine.axes[axisIndex]!;
      const unit = axis.type === 'linear' ? this.machine.lengthUnit : 'deg';
      return new AxisPlot(
        this.plotHolder,
        axis,
        axisIndex,
        this.rows.joints[column]!,
        unit,
        this.shared,
        {
          hover: (x) => this.timeline.setHover(x === null ? null : this.rowAt(x)),
          choose: () => this.timeline.goTo(this.timeline.shownRow),
          zoom: (from, to) => this.zoom(from, to),
          reset: () => this.reset(),
        },
        column === last,
      );
    });
    this.update();
    this.show();
  }

  private rowAt(x: number): number {
    const xs = this.shared.x;
    const after = Math.min(lowerBound(xs, x), xs.length - 1);
    return after > 0 && x - xs[after - 1]! < xs[after]! - x ? after - 1 : after;
  }

  private update(): void {
    const { shared } = this;
    const pixels = Math.max(Math.round(this.innerWidth() * devicePixelRatio), 1);
    shared.bounds = pixelBounds(shared.x, shared.from, shared.to, pixels);
    const spans = (flag: number): number[] => flaggedSpans(shared.x, this.rows.flags, flag, shared.bounds);
    shared.rapids = spans(Flag.rapid);
    shared.failed = spans(Flag.failed);
    this.plots.forEach((plot) => plot.update());
    this.drawLane();
  }

  private show(): void {
    const row = this.timeline.shownRow;
    this.plots.forEach((plot, column) => plot.show(row, this.rows.joints[column]![row]!));
  }

  private innerWidth(): number {
    return Math.max(this.holder.clientWidth - LEFT - RIGHT, 1);
  }

  private resize(): void {
    const width = this.holder.clientWidth;
    if (width > 0) {
      this.plots.forEach((plot) => plot.setWidth(width));
      this.update();
    }
  }

  private laneX(x: number): number {
    const { from, to } = this.shared;
    return LEFT + ((x - from) / (to - from || 1)) * this.innerWidth();
  }

  private drawLane(): void {
    const ratio = devicePixelRatio;
    const width = this.holder.clientWidth;
    this.lane.width = width * ratio;
    this.lane.height = LANE_HEIGHT * ratio;
    const context = this.lane.getContext('2d');
    if (context === null) {
      return;
    }
    const colors = EVENT_COLORS[this.shared.theme];
    const drawn = new Set<string>();
    for (const { x, event } of this.shared.events) {
      const at = this.laneX(x);
      const key = `${event.kind} ${Math.round(at)}`;
      if (x < this.shared.from || x > this.shared.to || drawn.has(key)) {
        continue;
      }
      drawn.add(key);
      context.setTransform(ratio, 0, 0, ratio, at * ratio, (LANE_HEIGHT / 2) * ratio);
      context.fillStyle = colors[event.kind]!;
      context.fill(new Path2D(EVENT_SHAPES[event.kind]));
    }
  }

  private eventNear(pixel: number): EventData | null {
    let nearest = NEAR;
    let found: EventData | null = null;
    for (const { x, event } of this.shared.events) {
      const distance = Math.abs(this.laneX(x) - pixel);
      if (distance < nearest) {
        nearest = distance;
        found = event;
      }
    }
    return found;
  }

  private listenOnLane(): void {
    const under = (event: MouseEvent): EventData | null =>
      this.eventNear(event.clientX - this.lane.getBoundingClientRect().left);
    this.lane.addEventListener('pointermove', (pointer) => {
      const event = under(pointer);
      this.lane.style.cursor = event === null ? '' : 'pointer';
      this.lane.title =
        event === null ? '' : `${EVENT_TITLES[event.kind]}, line ${event.line}: ${event.sentence}`;
      this.timeline.setHover(event?.row ?? null);
    });
    this.lane.addEventListener('pointerleave', () => this.timeline.setHover(null));
    this.lane.addEventListener('click', (pointer) => {
      const event = under(pointer);
      if (event !== null) {
        this.goTo(event);
      }
    });
  }
}
