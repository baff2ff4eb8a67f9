/// The report of each bundled sample in a browser: what is drawn, and that it is right.

import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { after, afterEach, before, test } from 'node:test';
import type { Browser, Page } from 'playwright-core';
import { openBrowser, openPage } from '../support/browser.ts';
import { SAMPLES, artefact, readData, solve, view } from '../support/samples.ts';

let browser: Browser;
before(async () => {
  browser = await openBrowser();
});
afterEach(() => Promise.all(browser.contexts().map((context) => context.close())));
after(() => browser.close());

/// The share of the drawing's pixels that are not of its background, the colour that the most have.
async function inkOfDrawing(page: Page): Promise<number> {
  return page.evaluate(async () => {
    const image = new Image();
    image.src = window.trunnion!.still()!;
    await image.decode();
    const canvas = document.createElement('canvas');
    canvas.width = image.width;
    canvas.height = image.height;
    const context = canvas.getContext('2d')!;
    context.drawImage(image, 0, 0);
    const pixels = new Uint32Array(context.getImageData(0, 0, image.width, image.height).data.buffer);
    const counts = new Map<number, number>();
    pixels.forEach((pixel) => counts.set(pixel, (counts.get(pixel) ?? 0) + 1));
    return 1 - Math.max(...counts.values()) / pixels.length;
  });
}

for (const sample of SAMPLES) {
  test(`${sample.name}: drawn, moved and measured`, async () => {
    const file = solve(sample.name, sample);
    const data = readData(file);
    const run = data.run!;
    const { page, complaints } = await openPage(browser, file);

    // Every axis, mount and the path stand in the drawing.
    const names = await page.evaluate(() => window.trunnion!.things().map(({ name }) => name));
    for (const { name } of data.machine.axes) {
      assert.ok(names.includes(`axis ${name}`) && names.includes(`pointer ${name}`), name);
    }
    for (const { name } of data.machine.mounts) {
      assert.ok(names.includes(`mount ${name}`), name);
    }
    assert.ok(names.includes('toolpath') && names.includes('tool'));
    const ink = await inkOfDrawing(page);
    assert.ok(ink > 0.08 && ink < 0.98, `${ink} of the drawing is drawn`);

    // The page's kinematics give what the program asked of every row. Angles are rounded to the sixth
    // decimal: at most 0.5e-6 degrees, 1e-8 rad, an axis, which at the arm's two metres make 2e-5 mm.
    const poses = await page.evaluate(() => window.trunnion!.comparePoses!());
    assert.equal(poses.rows, run.counts.rows);
    const reach = sample.machine.endsWith('.urdf') ? 5e-5 : 1e-5;
    assert.ok(poses.position < reach, `${poses.position} mm`);
    assert.ok(poses.direction < 1e-7, String(poses.direction));

    // A plot an axis, each with something on it, and the figures as the program tells them.
    const points = await page.evaluate(() => window.trunnion!.plotPoints!());
    assert.equal(points.length, run.rows.axes.length);
    assert.ok(points.every((count) => count > 100));
    const figures = (await page.textContent('#figures')) ?? '';
    for (const text of [data.machine.sha256, run.toolpath.sha256, ...run.command]) {
      assert.ok(figures.includes(text), text);
    }
    assert.equal(await page.locator('.range').count(), run.ranges.length);
    assert.match((await page.textContent('.verdict'))!, /^All .* points reached$/);
    assert.equal(await page.locator('#failures').count(), 0);

    // Another row is another picture.
    const first = await page.evaluate(() => window.trunnion!.still());
    await page.evaluate((row) => window.trunnion!.goTo!(row), Math.floor(run.counts.rows / 2));
    assert.notEqual(await page.evaluate(() => window.trunnion!.still()), first);
    await page.screenshot({ path: artefact(`${sample.name}.png`) });
    assert.deepEqual(complaints, []);
  });
}

test('the report needs no other file, is not large and has the notices of what it contains', () => {
  const html = readFileSync(artefact('trunnion-ac.html'), 'utf8');
  assert.ok(html.length < 1_500_000, `${html.length} bytes`);
  assert.ok(!/<(?:script|link|img)[^>]*\s(?:src|href)=/.test(html.slice(0, html.indexOf('<script>'))));
  assert.match(html, /Three\.js Authors/i);
  assert.match(html, /Leon Sorokin/);
  assert.match(html, /http-equiv="Content-Security-Policy" content="default-src 'none'/);
});

test('a machine is moved by hand within its limits', async () => {
  const file = view('view', 'samples/machines/trunnion-ac.toml');
  const { page, complaints } = await openPage(browser, file);
  const pose = (): Promise<string[]> => page.locator('.pose dd').allTextContents();
  // As README's `trunnion pose` has it: X=10 A=30, the others where they start.
  await page.getByLabel('X [mm], as a number').fill('10');
  await page.getByLabel('A [deg], as a number').fill('30');
  await page.keyboard.press('Enter');
  assert.deepEqual(await pose(), [
    '10.000000 mm',
    '230.000000 mm',
    '318.371686 mm',
    '0.000000000',
    '0.500000000',
    '0.866025404',
  ]);
  const before = await page.evaluate(() => window.trunnion!.still());
  // The tool's end is 100 below the spindle: along the tool, which leans by (0, 1/2, sqrt(3)/2).
  await page.getByLabel('Tool length').fill('100');
  await page.keyboard.press('Enter');
  assert.deepEqual((await pose()).slice(0, 3), ['10.000000 mm', '180.000000 mm', '231.769145 mm']);
  assert.notEqual(await page.evaluate(() => window.trunnion!.still()), before);
  // Beyond its limit an axis stops there, in the field as well.
  await page.getByLabel('Z [mm], as a number').fill('50');
  await page.keyboard.press('Enter');
  assert.equal(await page.getByLabel('Z [mm], as a number').inputValue(), '0');
  await page.getByLabel('A [deg]', { exact: true }).press('End');
  assert.equal(await page.getByLabel('A [deg], as a number').inputValue(), '30');
  await page.getByRole('button', { name: /initial/ }).click();
  assert.equal(await page.getByLabel('A [deg], as a number').inputValue(), '-30');
  assert.equal(await page.locator('#plots, #rows, #events').count(), 0);
  await page.screenshot({ path: artefact('view.png') });
  assert.deepEqual(complaints, []);
});
