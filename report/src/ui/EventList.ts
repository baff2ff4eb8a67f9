/// The events of the run, each a button that leads there.

import { EVENT_KINDS, type EventData, type EventKind } from '../data/contract.ts';
import type { Timeline } from '../motion/Timeline.ts';
import { element, setText } from '../base/dom.ts';
import { EVENT_TITLES, eventIcon } from '../base/eventMarks.ts';
import { VirtualList } from './VirtualList.ts';

const ROW_HEIGHT = 44;
const TALLEST = 340;

export class EventList {
  private readonly list: VirtualList;
  private shown: readonly EventData[];
  private readonly hidden = new Set<EventKind>();

  constructor(
    private readonly holder: HTMLElement,
    private readonly filter: HTMLElement,
    private readonly events: readonly EventData[], // by row
    private readonly timeline: Timeline,
    private readonly goTo: (event: EventData) => void,
  ) {
    this.shown = events;
    if (events.length === 0) {
      holder.append(element('p', { class: 'empty' }, 'No flip, rewind, pole, limit or failed point.'));
    }
    this.list = new VirtualList(holder, events.length, {
      height: ROW_HEIGHT,
      make: () => this.makeRow(),
      fill: (row, index) => this.fill(row, index),
    });
    this.makeFilter();
    this.fitHolder();
    this.list.render();
    timeline.subscribe(() => this.list.render());
  }

  reveal(event: EventData): void {
    const index = this.shown.indexOf(event);
    if (index >= 0) {
      this.list.reveal(index);
    }
  }

  private makeFilter(): void {
    for (const kind of EVENT_KINDS) {
      const many = this.events.filter((event) => event.kind === kind).length;
      if (many === 0) {
        continue;
      }
      const toggle = element(
        'button',
        { type: 'button', class: 'chip', 'aria-pressed': 'true' },
        eventIcon(kind),
        `${many} ${EVENT_TITLES[kind]}`,
      );
      toggle.addEventListener('click', () => {
        const isHidden = this.hidden.has(kind);
        isHidden ? this.hidden.delete(kind) : this.hidden.add(kind);
        toggle.setAttribute('aria-pressed', String(isHidden));
        this.shown = this.events.filter((event) => !this.hidden.has(event.kind));
        this.fitHolder();
        this.list.setCount(this.shown.length);
      });
      this.filter.append(toggle);
    }
  }

  private fitHolder(): void {
    const height = Math.max(this.shown.length, 1) * ROW_HEIGHT + 2;
    this.holder.style.height = `${Math.min(height, TALLEST)}px`;
  }

  private makeRow(): HTMLElement {
    const row = element('button', { type: 'button', class: 'event' });
    row.append(element('span', { class: 'shape' }), element('span', { class: 'where' }), element('span'));
    row.addEventListener('click', () => {
      const event = this.shown[Number(row.dataset['event'])];
      if (event !== undefined) {
        this.goTo(event);
      }
    });
    return row;
  }

  private fill(row: HTMLElement, index: number): void {
    const event = this.shown[index]!;
    row.dataset['event'] = String(index);
    if (row.dataset['kind'] !== event.kind) {
      row.dataset['kind'] = event.kind;
      row.children[0]!.replaceChildren(eventIcon(event.kind));
    }
    setText(row.children[1]!, `${EVENT_TITLES[event.kind]}, line ${event.line}, row ${event.row + 1}`);
    setText(row.children[2]!, event.sentence);
    row.title = event.sentence;
    row.classList.toggle('shown', event.row === this.timeline.shownRow);
  }
}
