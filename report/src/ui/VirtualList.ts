/// A list of any length of which only the rows in sight are elements.

export interface RowMaker {
  readonly height: number; // of a row [px]
  make(): HTMLElement;
  fill(row: HTMLElement, index: number): void;
}

// Browsers stop at some height of an element; beyond this one the scroll bar stands for it in proportion.
const TALLEST = 8_000_000;

export class VirtualList {
  private readonly space = document.createElement('div');
  private readonly pool: HTMLElement[] = [];
  private height = 0; // of the space [px]
  private readonly headHeight: () => number;

  /// The space of the rows is put behind what `holder`, which scrolls, already has: a head that sticks.
  constructor(
    private readonly holder: HTMLElement,
    private count: number,
    private readonly maker: RowMaker,
  ) {
    this.space.className = 'rows';
    this.space.setAttribute('role', 'rowgroup');
    this.measure();
    const head = holder.firstElementChild;
    this.headHeight = () => (head instanceof HTMLElement ? head.offsetHeight : 0);
    holder.append(this.space);
    holder.addEventListener('scroll', () => this.render(), { passive: true });
    new ResizeObserver(() => this.render()).observe(holder);
  }

  setCount(count: number): void {
    this.count = count;
    this.measure();
    this.render();
  }

  /// Fills the rows in sight again.
  render(): void {
    const { height } = this.maker;
    const room = this.room();
    const top = this.topRow();
    const first = Math.floor(top);
    const wanted = Math.min(Math.ceil(room / height) + 1, this.count);
    while (this.pool.length < wanted) {
      const row = this.maker.make();
      this.pool.push(row);
      this.space.append(row);
    }
    const offset = Math.min(this.holder.scrollTop, this.farthest()) - (top - first) * height;
    this.pool.forEach((row, slot) => {
      const index = first + slot;
      const isUsed = slot < wanted && index < this.count;
      row.hidden = !isUsed;
      if (isUsed) {
        row.style.transform = `translateY(${offset + slot * height}px)`;
        this.maker.fill(row, index);
      }
    });
  }

  /// Scrolls by no more than it takes to have the row in sight, to the middle where it is far off.
  reveal(index: number): void {
    const { height } = this.maker;
    const rows = this.room() / height;
    const top = this.topRow();
    if (index >= top && index + 1 <= top + rows) {
      this.render();
      return;
    }
    const wanted = Math.min(Math.max(index + 0.5 - rows / 2, 0), Math.max(this.count - rows, 0));
    const last = Math.max(this.count - rows, 1e-9);
    this.holder.scrollTop = (wanted / last) * this.farthest();
    this.render();
  }

  private measure(): void {
    this.height = Math.min(this.count * this.maker.height, TALLEST);
    this.space.style.height = `${this.height}px`;
  }

  private room(): number {
    return Math.max(this.holder.clientHeight - this.headHeight(), 0);
  }

  private farthest(): number {
    return Math.max(this.height - this.room(), 0);
  }

  /// The first row in sight, with the share of it that is not.
  private topRow(): number {
    const rows = this.room() / this.maker.height;
    const farthest = this.farthest();
    const share = farthest > 0 ? Math.min(this.holder.scrollTop / farthest, 1) : 0;
    return share * Math.max(this.count - rows, 0);
  }
}
