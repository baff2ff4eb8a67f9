/// One axis over the run: its values, its limits, the rapids and the events.

import uPlot from 'uplot';
import type { AxisData, EventData } from '../data/contract.ts';
import { axisColor, EVENT_COLORS, type Theme } from '../base/palette.ts';
import { element, setText } from '../base/dom.ts';
import { limitsText, short } from '../base/format.ts';
import { decimate } from './decimate.ts';

export const LEFT = 58; // of the plots, for their scales [px]
export const RIGHT = 10;
const HEIGHT = 92;
const HEIGHT_OF_SCALE = 30;
const NEAREST_EVENTS = 4; // that each get a line of their own [px]

/// What all plots of a run share.
export interface Shared {
  readonly x: Float64Array; // ascending
  from: number;
  to: number;
  bounds: Uint32Array;
  rapids: readonly number[]; // pairs of x
  failed: readonly number[]; // likewise
  readonly events: readonly { readonly x: number; readonly event: EventData }[];
  theme: Theme;
}

export interface PlotCallbacks {
  hover(x: number | null): void;
  choose(): void; // what the pointer is over
  zoom(from: number, to: number): void;
  reset(): void;
}

const INK = {
  light: {
    text: '#5a6675',
    grid: '#e3e7ec',
    rapid: 'rgba(199,125,10,0.10)',
    failed: 'rgba(193,31,58,0.16)',
    limit: '#c11f3a',
    beyond: 'rgba(193,31,58,0.09)',
  },
  dark: {
    text: '#9aa7b5',
    grid: '#2a323b',
    rapid: 'rgba(240,162,74,0.13)',
    failed: 'rgba(255,107,125,0.22)',
    limit: '#ff6b7d',
    beyond: 'rgba(255,107,125,0.14)',
  },
} as const;

export class AxisPlot {
  private readonly plot: uPlot;
  private readonly value = element('output', { class: 'value' });
  private readonly playhead = element('div', { class: 'playhead' });
  private shownX = 0;

  constructor(
    holder: HTMLElement,
    private readonly axis: AxisData,
    private readonly axisIndex: number,
    private readonly values: Float64Array,
    unit: string,
    private readonly shared: Shared,
    private readonly callbacks: PlotCallbacks,
    hasScale: boolean,
  ) {
    const swatch = element('i', { class: 'swatch' });
    swatch.style.setProperty('--axis', `var(--axis-${axisIndex % 8})`);
    const head = element(
      'div',
      { class: 'plot-head' },
      swatch,
      element('b', {}, axis.name),
      this.value,
      element('span', { class: 'unit' }, unit),
      element('span', { class: 'limits' }, limitsText(axis.limits)),
    );
    const figure = element('figure', { class: 'plot' }, head);
    figure.setAttribute('aria-label', `${axis.name} over the run`);
    holder.append(figure);
    this.plot = new uPlot(this.options(holder.clientWidth, hasScale), [[], []], figure);
    this.plot.over.append(this.playhead);
    this.listen();
  }

  setWidth(width: number): void {
    this.plot.setSize({ width, height: this.plot.height });
  }

  /// Takes over what has changed in the shared part.
  update(): void {
    const { x, y } = decimate(this.shared.x, this.values, this.shared.bounds);
    this.plot.batch(() => {
      this.plot.setData([x, y], false);
      this.plot.setScale('x', { min: this.shared.from, max: this.shared.to });
      this.plot.setScale('y', this.yRange(y));
    });
    this.movePlayhead();
  }

  redraw(): void {
    this.plot.redraw(false, false);
  }

  show(row: number, value: number): void {
    setText(this.value, short(value, this.axis.type === 'linear' ? 3 : 4));
    this.shownX = this.shared.x[row]!;
    this.movePlayhead();
  }

  /// For those who inspect the page.
  drawnPoints(): number {
    return this.plot.data[0].length;
  }

  private movePlayhead(): void {
    const { from, to } = this.shared;
    const isInside = this.shownX >= from && this.shownX <= to;
    this.playhead.hidden = !isInside;
    if (isInside) {
      this.playhead.style.transform = `translateX(${this.plot.valToPos(this.shownX, 'x')}px)`;
    }
  }

  /// Limits are in sight where the axis comes near them.
  private yRange(values: readonly number[]): { min: number; max: number } {
    let low = Infinity;
    let high = -Infinity;
    for (const value of values) {
      low = Math.min(low, value);
      high = Math.max(high, value);
    }
    const span = Math.max(high - low, this.axis.type === 'linear' ? 0.5 : 1);
    const [least, most] = this.axis.limits;
    const margin = span * 0.08;
    let min = low - margin;
    let max = high + margin;
    if (least !== null && low - least < span * 0.35) {
      min = Math.min(min, least - margin);
    }
    if (most !== null && most - high < span * 0.35) {
      max = Math.max(max, most + margin);
    }
    const lacking = span * 1.16 - (max - min);
    return lacking > 0 ? { min: min - lacking / 2, max: max + lacking / 2 } : { min, max };
  }

  private options(width: number, hasScale: boolean): uPlot.Options {
    const ink = (): (typeof INK)[Theme] => INK[this.shared.theme];
    const font = '11px system-ui, sans-serif';
    return {
      width,
      height: hasScale ? HEIGHT + HEIGHT_OF_SCALE : HEIGHT,
      padding: [4, RIGHT, 4, 0],
      legend: { show: false },
      cursor: { x: false, y: false, points: { show: false }, drag: { x: true, y: false, setScale: false } },
      scales: { x: { time: false, auto: false }, y: { auto: false } },
      axes: [
        {
          show: hasScale,
          size: HEIGHT_OF_SCALE,
          font,
          stroke: () => ink().text,
          grid: { stroke: () => ink().grid, width: 1 },
          ticks: { show: false },
        },
        {
          size: LEFT,
          font,
          space: 26,
          stroke: () => ink().text,
          grid: { stroke: () => ink().grid, width: 1 },
          ticks: { show: false },
        },
      ],
      series: [
        {},
        {
          stroke: () => axisColor(this.axisIndex, this.shared.theme),
          width: 1.5,
          points: { show: false },
        },
      ],
      hooks: {
        drawClear: [(plot) => this.drawBehind(plot)],
        draw: [(plot) => this.drawEvents(plot)],
        setSelect: [(plot) => this.zoom(plot)],
      },
    };
  }

  private drawBehind(plot: uPlot): void {
    const { ctx } = plot;
    const { left, top, width, height } = plot.bbox;
    const ink = INK[this.shared.theme];
    const px = (x: number): number => Math.min(Math.max(plot.valToPos(x, 'x', true), left), left + width);
    ctx.save();
    for (const [spans, color] of [
      [this.shared.rapids, ink.rapid],
      [this.shared.failed, ink.failed],
    ] as const) {
      ctx.fillStyle = color;
      for (let i = 0; i + 1 < spans.length; i += 2) {
        const from = px(spans[i]!);
        ctx.fillRect(from, top, Math.max(px(spans[i + 1]!) - from, 1), height);
      }
    }
    ctx.beginPath();
    ctx.rect(left, top, width, height);
    ctx.clip();
    this.axis.limits.forEach((limit, side) => {
      if (limit === null) {
        return;
      }
      const y = plot.valToPos(limit, 'y', true);
      const edge = side === 0 ? top + height : top;
      ctx.fillStyle = ink.beyond;
      if (side === 0 ? y < edge : y > edge) {
        ctx.fillRect(left, Math.min(y, edge), width, Math.abs(edge - y));
        ctx.fillStyle = ink.limit;
        ctx.fillRect(left, Math.round(y), width, devicePixelRatio);
      }
    });
    ctx.restore();
  }

  private drawEvents(plot: uPlot): void {
    const { ctx } = plot;
    const { left, top, width, height } = plot.bbox;
    const colors = EVENT_COLORS[this.shared.theme];
    ctx.save();
    ctx.globalAlpha = 0.55;
    let drawn = -Infinity;
    // What failed is shaded.
    for (const { x, event } of this.shared.events.filter((one) => one.event.kind !== 'failed')) {
      const at = Math.round(plot.valToPos(x, 'x', true));
      if (at - drawn > NEAREST_EVENTS * devicePixelRatio && at >= left && at <= left + width) {
        ctx.fillStyle = colors[event.kind]!;
        ctx.fillRect(at, top, devicePixelRatio, height);
        drawn = at;
      }
    }
    ctx.restore();
  }

  private zoom(plot: uPlot): void {
    const { left, width } = plot.select;
    if (width > 4) {
      this.callbacks.zoom(plot.posToVal(left, 'x'), plot.posToVal(left + width, 'x'));
      plot.setSelect({ left: 0, top: 0, width: 0, height: 0 }, false);
    }
  }

  private listen(): void {
    const { over } = this.plot;
    const x = (event: MouseEvent): number =>
      this.plot.posToVal(event.clientX - over.getBoundingClientRect().left, 'x');
    let pressedAt = 0;
    over.addEventListener('pointermove', (event) => this.callbacks.hover(x(event)));
    over.addEventListener('pointerleave', () => this.callbacks.hover(null));
    over.addEventListener('pointerdown', (event) => (pressedAt = event.clientX));
    over.addEventListener('click', (event) => {
      if (Math.abs(event.clientX - pressedAt) <= 4) {
        this.callbacks.choose();
      }
    });
    over.addEventListener('dblclick', () => this.callbacks.reset());
  }
}
