/// What is looked at: a place between two rows, the row under the pointer, and whether it plays.

export type Listener = () => void;

export interface TimelineData {
  readonly rowCount: number;
  readonly times: Float64Array; // ascending [s]
}

export class Timeline {
  readonly rowCount: number;
  readonly times: Float64Array;
  private place = 0; // the row before, and the share of the way to the next
  private hovered: number | null = null;
  private listeners: Listener[] = [];

  constructor(data: TimelineData) {
    this.rowCount = data.rowCount;
    this.times = data.times;
  }

  /// The row that is chosen, whatever the pointer is at.
  get row(): number {
    return Math.floor(this.place);
  }

  get hover(): number | null {
    return this.hovered;
  }

  /// The row that everything shows.
  get shownRow(): number {
    return this.hovered ?? this.row;
  }

  /// Likewise, with the share of the way to the next row.
  get shownPlace(): number {
    return this.hovered ?? this.place;
  }

  get lastRow(): number {
    return this.rowCount - 1;
  }

  subscribe(listener: Listener): void {
    this.listeners.push(listener);
  }

  /// Chooses a place; the pointer has to move before its row is shown again.
  goTo(place: number): void {
    this.hovered = null;
    this.place = Math.min(Math.max(place, 0), this.lastRow);
    this.tell();
  }

  setHover(row: number | null): void {
    const next = row === null ? null : Math.min(Math.max(Math.round(row), 0), this.lastRow);
    if (next !== this.hovered) {
      this.hovered = next;
      this.tell();
    }
  }

  private tell(): void {
    this.listeners.forEach((listener) => listener());
  }
}
