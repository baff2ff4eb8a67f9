import assert from 'node:assert/strict';
import { readFileSync, readdirSync } from 'node:fs';
import { join } from 'node:path';
import { test } from 'node:test';

/// Lower folders first.
const LAYERS: readonly (readonly string[])[] = [
  ['data'],
  ['motion'],
  ['base'],
  ['plot', 'scene'],
  ['ui'],
  ['app'],
];

test('a lower folder imports nothing of a higher one', () => {
  const layerOf = (folder: string): number => LAYERS.findIndex((layer) => layer.includes(folder));
  let seen = 0;
  for (const folder of LAYERS.flat()) {
    for (const file of readdirSync(join('src', folder))) {
      const text = readFileSync(join('src', folder, file), 'utf8');
      for (const [, other] of text.matchAll(/from '\.\.\/(\w+)\//g)) {
        const isAllowed = other === folder || layerOf(other!) < layerOf(folder);
        assert.ok(isAllowed && layerOf(other!) >= 0, `${folder}/${file} imports from ${other}`);
        seen += 1;
      }
    }
  }
  assert.ok(seen > 50, `${seen} imports`);
});
