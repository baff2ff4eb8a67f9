/// Play, pause, step and scrub.

import type { Playback } from '../motion/playback.ts';
import { SPEEDS, timeAt } from '../motion/playback.ts';
import type { Timeline } from '../motion/Timeline.ts';
import { controlIcon, element, iconButton, setText } from '../base/dom.ts';
import { clock, count } from '../base/format.ts';

export interface TransportActions {
  playOrPause(): void;
  step(rows: number): void;
  toEvent(step: 1 | -1): void;
}

export class Transport {
  private readonly play: HTMLButtonElement;
  private readonly scrubber: HTMLInputElement;
  private readonly speed = element('select', { 'aria-label': 'Speed of playing' });
  private readonly place = element('output', { class: 'place' });
  private readonly time = element('output', { class: 'time' });

  constructor(
    holder: HTMLElement,
    private readonly timeline: Timeline,
    private readonly playback: Playback,
    actions: TransportActions,
    hasEvents: boolean,
  ) {
    this.play = iconButton('play', 'Play', actions.playOrPause, 'Space');
    this.play.classList.add('play');
    const range = { min: '0', max: String(timeline.lastRow), value: '0', step: '1' };
    this.scrubber = element('input', { type: 'range', class: 'scrubber', ...range });
    this.scrubber.setAttribute('aria-label', 'Row');
    this.scrubber.addEventListener('input', () => timeline.goTo(this.scrubber.valueAsNumber));
    const before = iconButton('eventBefore', 'Event before', () => actions.toEvent(-1), 'P');
    const next = iconButton('nextEvent', 'Next event', () => actions.toEvent(1), 'N');
    before.disabled = next.disabled = !hasEvents;
    for (const speed of SPEEDS) {
      this.speed.append(element('option', { value: String(speed) }, `${speed}\u00d7`));
    }
    this.speed.title = 'Plays at the programmed feed, and at nominal rates without one; not a cycle time';
    this.speed.addEventListener('change', () => {
      playback.speed = Number(this.speed.value);
    });
    holder.append(
      element(
        'div',
        { class: 'transport-buttons' },
        before,
        iconButton('back', 'Row before', () => actions.step(-1), '\u2190'),
        this.play,
        iconButton('on', 'Next row', () => actions.step(1), '\u2192'),
        next,
        this.speed,
      ),
      element('div', { class: 'transport-place' }, this.place, this.time),
      this.scrubber,
    );
    timeline.subscribe(() => this.show());
    this.show();
    this.showPlayback();
  }

  showPlayback(): void {
    const { isPlaying, speed } = this.playback;
    this.play.replaceChildren(controlIcon(isPlaying ? 'pause' : 'play'));
    this.play.setAttribute('aria-label', isPlaying ? 'Pause' : 'Play');
    this.speed.value = String(speed);
  }

  private show(): void {
    const { timeline } = this;
    this.scrubber.value = String(timeline.row);
    setText(this.place, `row ${count(timeline.shownRow + 1)} of ${count(timeline.rowCount)}`);
    const now = timeAt(timeline.times, timeline.shownPlace);
    setText(this.time, `${clock(now)} of ${clock(timeline.times.at(-1) ?? 0)}, nominal`);
  }
}
