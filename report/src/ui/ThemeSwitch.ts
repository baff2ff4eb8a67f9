/// Light or dark: as the system has it, until somebody chooses.

import type { Theme } from '../base/palette.ts';

export class ThemeSwitch {
  private readonly system = window.matchMedia('(prefers-color-scheme: dark)');
  private chosen: Theme | null = null;
  private isPrinting = false;

  constructor(private readonly changed: (theme: Theme) => void) {
    this.system.addEventListener('change', () => this.tell());
    this.tell();
  }

  /// Paper is light.
  get theme(): Theme {
    if (this.isPrinting) {
      return 'light';
    }
    return this.chosen ?? (this.system.matches ? 'dark' : 'light');
  }

  toggle(): void {
    this.chosen = this.theme === 'dark' ? 'light' : 'dark';
    this.tell();
  }

  setPrinting(isPrinting: boolean): void {
    this.isPrinting = isPrinting;
    this.tell();
  }

  private tell(): void {
    document.documentElement.dataset['theme'] = this.theme;
    this.changed(this.theme);
  }
}
