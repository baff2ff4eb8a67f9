/// Names in the drawing, always of the same size on the screen.

import { CanvasTexture, LinearFilter, Sprite, SpriteMaterial, SRGBColorSpace } from 'three';
import type { ScenePalette } from '../base/palette.ts';

const FONT_SIZE = 15; // [CSS px]
const LONGEST = 28;

export class Label {
  readonly sprite = new Sprite(new SpriteMaterial({ depthTest: false, depthWrite: false }));
  private width = 0;
  private height = 0;

  constructor(
    private readonly text: string,
    private readonly colorOf: (palette: ScenePalette) => string,
  ) {
    this.sprite.material.sizeAttenuation = false;
    this.sprite.renderOrder = 10;
  }

  paint(palette: ScenePalette, pixelRatio: number): void {
    const shown = this.text.length > LONGEST ? `${this.text.slice(0, LONGEST - 1)}\u2026` : this.text;
    const canvas = document.createElement('canvas');
    const context = canvas.getContext('2d');
    if (context === null) {
      return;
    }
    const font = `600 ${FONT_SIZE * pixelRatio}px system-ui, sans-serif`;
    context.font = font;
    const margin = 4 * pixelRatio;
    canvas.width = Math.ceil(context.measureText(shown).width + 2 * margin);
    canvas.height = Math.ceil(FONT_SIZE * 1.5 * pixelRatio);
    context.font = font;
    context.textBaseline = 'middle';
    context.lineJoin = 'round';
    context.lineWidth = 3.5 * pixelRatio;
    context.strokeStyle = palette.halo;
    context.strokeText(shown, margin, canvas.height / 2);
    context.fillStyle = this.colorOf(palette);
    context.fillText(shown, margin, canvas.height / 2);
    this.width = canvas.width / pixelRatio;
    this.height = canvas.height / pixelRatio;
    const { material } = this.sprite;
    material.map?.dispose();
    material.map = new CanvasTexture(canvas);
    material.map.colorSpace = SRGBColorSpace;
    material.map.minFilter = LinearFilter;
    material.map.generateMipmaps = false;
    material.needsUpdate = true;
  }

  /// Takes the size that a CSS pixel has at a distance of 1.
  scale(pixel: number): void {
    this.sprite.scale.set(this.width * pixel, this.height * pixel, 1);
  }
}
