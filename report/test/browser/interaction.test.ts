/// How the parts of a report's page follow each other, and what it does where something is missing.

import assert from 'node:assert/strict';
import { after, afterEach, before, test } from 'node:test';
import { readFileSync, statSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import type { Browser, Page } from 'playwright-core';
import type { ReportData, RunData } from '../../src/data/contract.ts';
import { openBrowser, openPage } from '../support/browser.ts';
import { longRun } from '../support/synthetic.ts';
import { ROOT, SAMPLES, artefact, pack, readData, solve, view, withData } from '../support/samples.ts';

let browser: Browser;
let file: string;
let data: ReportData;
let run: RunData;

before(async () => {
  browser = await openBrowser();
  file = solve('interaction', SAMPLES[0]!);
  data = readData(file);
  run = data.run!;
});
afterEach(() => Promise.all(browser.contexts().map((context) => context.close())));
after(() => browser.close());

const row = (page: Page): Promise<number> => page.evaluate(() => window.trunnion!.row!());
const shownRow = (page: Page): Promise<number> => page.evaluate(() => window.trunnion!.shownRow!());
const still = (page: Page): Promise<string | null> => page.evaluate(() => window.trunnion!.still());

/// The row that is marked in the table, from 0.
async function tableRow(page: Page): Promise<number> {
  const marked = page.locator('#rows-body .row.shown:not([hidden])');
  assert.equal(await marked.count(), 1);
  return Number(await marked.locator('span').first().textContent()) - 1;
}

test('plot, drawing and table show the row under the pointer, and the chosen one afterwards', async () => {
  const { page, complaints } = await openPage(browser, file);
  const atStart = await still(page);
  const plot = page.locator('.u-over').first();
  const box = (await plot.boundingBox())!;
  await page.mouse.move(box.x + box.width * 0.7, box.y + box.height / 2);
  const hovered = await shownRow(page);
  assert.ok(hovered > 100);
  assert.equal(await row(page), 0);
  assert.equal(await tableRow(page), hovered);
  assert.notEqual(await still(page), atStart);
  const place = await page.locator('.place').textContent();
  assert.ok(place!.replace(/\D/g, '').startsWith(String(hovered + 1)));

  await page.mouse.move(box.x + box.width * 0.7, 5);
  assert.equal(await shownRow(page), 0);
  assert.equal(await still(page), atStart);

  await page.mouse.click(box.x + box.width * 0.7, box.y + box.height / 2);
  await page.mouse.move(5, 5);
  assert.equal(await row(page), hovered);
  assert.equal(await tableRow(page), hovered);

  // Rows of the table lead back.
  const other = page.locator('#rows-body .row:not([hidden])').nth(2);
  await other.hover();
  const over = Number(await other.locator('span').first().textContent()) - 1;
  assert.equal(await shownRow(page), over);
  await other.click();
  assert.equal(await row(page), over);

  // And so does the toolpath in the drawing: somewhere on the canvas there is a point of it.
  await page.locator('#stage canvas').scrollIntoViewIfNeeded();
  const stage = (await page.locator('#stage canvas').boundingBox())!;
  const rows = new Set<number>();
  for (let share = 0.3; share < 0.8; share += 0.02) {
    await page.mouse.move(stage.x + stage.width * 0.43, stage.y + stage.height * share);
    rows.add(await shownRow(page));
  }
  assert.ok(rows.size > 2, `${rows.size} rows`);
  assert.deepEqual(complaints, []);
});

test('events lead to their row and line, by a click and by keys', async () => {
  const { page, complaints } = await openPage(browser, file);
  const events = [...run.events].sort((a, b) => a.row - b.row);
  assert.ok(events.length >= 3);
  const listed = page.locator('button.event:not([hidden])');
  assert.equal(await listed.count(), events.length);
  await listed.nth(1).click();
  assert.equal(await row(page), events[1]!.row);
  assert.equal(await tableRow(page), events[1]!.row);
  const line = page.locator('#readout div', { hasText: /^line/ }).locator('dd');
  assert.equal(await line.textContent(), String(events[1]!.line));
  assert.ok((await page.textContent('.announcement'))!.includes(`line ${events[1]!.line}`));

  await page.keyboard.press('n');
  assert.equal(await row(page), events[2]!.row);
  await page.keyboard.press('p');
  await page.keyboard.press('p');
  assert.equal(await row(page), events[0]!.row);

  // The marks above the plots lead there as well.
  const lane = (await page.locator('canvas.lane').boundingBox())!;
  let found = -1;
  for (let x = lane.x + 60; x < lane.x + lane.width && found < 0; x += 4) {
    await page.mouse.move(x, lane.y + lane.height / 2);
    if ((await page.locator('canvas.lane').getAttribute('title')) !== '') {
      await page.mouse.click(x, lane.y + lane.height / 2);
      found = await row(page);
    }
  }
  assert.ok(events.some((event) => event.row === found));

  // What is not wanted is left out of the list.
  await page.locator('.chip').first().click();
  const kind = events.filter((event) => event.kind === 'pole').length;
  assert.equal(await listed.count(), events.length - kind);
  assert.deepEqual(complaints, []);
});

test('it plays, pauses and steps, and its keys work', async () => {
  const { page, complaints } = await openPage(browser, file);
  await page.keyboard.press(' ');
  await page.waitForFunction(() => window.trunnion!.row!() > 5, undefined, { timeout: 15_000 });
  assert.equal(await page.evaluate(() => window.trunnion!.isPlaying!()), true);
  await page.keyboard.press(' ');
  assert.equal(await page.evaluate(() => window.trunnion!.isPlaying!()), false);
  const paused = await row(page);
  await page.waitForTimeout(150);
  assert.equal(await row(page), paused);

  await page.keyboard.press('ArrowRight');
  assert.equal(await row(page), paused + 1);
  await page.keyboard.press('Shift+ArrowRight');
  assert.equal(await row(page), paused + 11);
  await page.keyboard.press('ArrowLeft');
  assert.equal(await row(page), paused + 10);
  await page.keyboard.press('End');
  assert.equal(await row(page), run.counts.rows - 1);
  assert.equal(await tableRow(page), run.counts.rows - 1);
  await page.keyboard.press('Home');
  assert.equal(await row(page), 0);

  const speed = page.getByLabel('Speed of playing');
  const before = await speed.inputValue();
  await page.keyboard.press('.');
  assert.ok(Number(await speed.inputValue()) > Number(before));

  // The drawing turns, zooms and fits by keys, and follows the part.
  for (const key of ['a', 'w', '+', '2', 'f', 'g', 'u', 'c']) {
    const seen = await still(page);
    await page.keyboard.press(key);
    assert.notEqual(await still(page), seen, key);
  }
  await page.evaluate((middle) => window.trunnion!.goTo!(middle), Math.floor(run.counts.rows / 3));
  const table = (): Promise<readonly number[]> =>
    page.evaluate(() => window.trunnion!.things().find(({ name }) => name === 'path on table')!.position);
  const rest = await table();
  await page.keyboard.press('End');
  (await table()).forEach((value, k) => assert.ok(Math.abs(value - rest[k]!) < 1e-6));

  await page.keyboard.press('?');
  assert.equal(await page.locator('dialog[open]').count(), 1);
  assert.ok((await page.locator('dialog kbd').count()) > 10);
  await page.keyboard.press('ArrowLeft'); // is the dialog's now
  assert.equal(await row(page), run.counts.rows - 1);
  await page.keyboard.press('Escape');
  assert.equal(await page.locator('dialog[open]').count(), 0);

  // The keyboard reaches the controls and shows where it is.
  await page.locator('.scrubber').focus();
  await page.keyboard.press('ArrowLeft');
  assert.equal(await row(page), run.counts.rows - 2);
  const outline = await page.evaluate(() => getComputedStyle(document.activeElement!).outlineStyle);
  assert.notEqual(outline, 'none');
  assert.deepEqual(complaints, []);
});

test('plots: dragging looks closer, a double click shows all again, over seconds or rows', async () => {
  const { page } = await openPage(browser, file);
  const plot = page.locator('.u-over').first();
  const box = (await plot.boundingBox())!;
  const rowAt = async (share: number): Promise<number> => {
    await page.mouse.move(box.x + box.width * share, box.y + 20);
    return shownRow(page);
  };
  const [from, to] = [await rowAt(0.4), await rowAt(0.6)];
  await page.mouse.move(box.x + box.width * 0.4, box.y + 20);
  await page.mouse.down();
  await page.mouse.move(box.x + box.width * 0.6, box.y + 20, { steps: 4 });
  await page.mouse.up();
  const near = (actual: number, wanted: number): void =>
    assert.ok(Math.abs(actual - wanted) < 30, `${actual}, wanted ${wanted}`);
  near(await rowAt(0.003), from);
  near(await rowAt(0.997), to);
  await page.mouse.dblclick(box.x + box.width * 0.5, box.y + 20);
  near(await rowAt(0.6), to);
  await page.getByRole('button', { name: /Plots over time or rows/ }).click();
  near(await rowAt(0.5), run.counts.rows / 2);
});

test('on a narrow screen nothing has to be scrolled sideways, in the dark as well', async () => {
  for (const [name, path, colorScheme] of [
    ['narrow', file, 'light'],
    ['narrow-dark', file, 'dark'],
    ['narrow-machine', view('narrow-machine', 'samples/machines/mill-turn-bc.toml'), 'dark'],
  ] as const) {
    const { page, complaints } = await openPage(browser, path, { width: 390, height: 844, colorScheme });
    const wide = await page.evaluate(() => document.documentElement.scrollWidth);
    assert.ok(wide <= 390, `${wide}`);
    await page.screenshot({ path: artefact(`${name}.png`), fullPage: true });
    assert.deepEqual(complaints, []);
  }
});

test('dark where the system is dark, and as somebody chooses', async () => {
  const { page, complaints } = await openPage(browser, file, { colorScheme: 'dark' });
  const background = (): Promise<string> =>
    page.evaluate(() => getComputedStyle(document.body).backgroundColor);
  const brightness = async (): Promise<number> => Number(/rgb\((\d+)/.exec(await background())![1]);
  assert.ok((await brightness()) < 60);
  await page.screenshot({ path: artefact('dark.png') });
  const seen = await still(page);
  await page.keyboard.press('t');
  assert.ok((await brightness()) > 200);
  assert.notEqual(await still(page), seen);
  assert.deepEqual(complaints, []);
});

test('it prints figures, plots, events and a still of the machine, on light paper', async () => {
  const { page, complaints } = await openPage(browser, file, { colorScheme: 'dark' });
  const pdf = await page.pdf({ format: 'A4', printBackground: true });
  writeFileSync(artefact('print.pdf'), pdf);
  assert.ok(pdf.length > 40_000, `${pdf.length} bytes`);
  await page.evaluate(() => window.dispatchEvent(new Event('beforeprint')));
  await page.emulateMedia({ media: 'print' });
  for (const shown of ['#figures', '.plot canvas', '#events-print li', '.still', '#header h1']) {
    assert.ok(await page.locator(shown).first().isVisible(), shown);
  }
  for (const hidden of ['#rows', '#transport', '#stage canvas', '#header-tools']) {
    assert.ok(!(await page.locator(hidden).first().isVisible()), hidden);
  }
  assert.equal(await page.locator('#events-print li').count(), run.events.length);
  assert.equal(await page.evaluate(() => document.documentElement.dataset['theme']), 'light');
  await page.screenshot({ path: artefact('print.png'), fullPage: true });
  await page.evaluate(() => window.dispatchEvent(new Event('afterprint')));
  assert.equal(await page.evaluate(() => document.documentElement.dataset['theme']), 'dark');
  assert.deepEqual(complaints, []);
});

test('a run that failed says so first, and where', async () => {
  // Without its unlimited C axis the trunnion cannot follow the spiral.
  const failed = solve('failed', { ...SAMPLES[0]!, more: ['--lock', 'C=0'] }, 1);
  const failures = readData(failed).run!.events.filter(({ kind }) => kind === 'failed');
  const { page, complaints } = await openPage(browser, failed);
  const banner = page.locator('#failures');
  assert.match(
    (await banner.locator('h2').textContent())!,
    /This run failed: [\d\u202f]+ of 1\u202f384 points are not reached/,
  );
  assert.ok((await banner.boundingBox())!.y < 200);
  const first = failures[0]!;
  const text = (await banner.textContent())!;
  assert.ok(text.includes(`line ${first.line}`) && text.includes(first.sentence));
  await banner.getByRole('button').nth(1).click();
  assert.equal(await row(page), failures[1]!.row);
  assert.match((await page.textContent('.verdict'))!, /^Failed/);
  const names = await page.evaluate(() => window.trunnion!.things().map(({ name }) => name));
  assert.ok(names.includes('failed points'));
  const poses = await page.evaluate(() => window.trunnion!.comparePoses!());
  assert.equal(poses.rows, 1384 - failures.length);
  assert.ok(poses.position < 1e-5, `${poses.position} mm`);
  await page.screenshot({ path: artefact('failed.png') });
  assert.deepEqual(complaints, []);
});

test('without WebGL it says so, and all else works', async () => {
  const plain = await openBrowser(false);
  const { page } = await openPage(plain, file);
  assert.match((await page.textContent('#no-webgl'))!, /no WebGL/);
  await page.keyboard.press('n');
  const first = Math.min(...run.events.map((event) => event.row));
  assert.equal(await row(page), first);
  assert.equal(await tableRow(page), first);
  const poses = await page.evaluate(() => window.trunnion!.comparePoses!());
  assert.equal(poses.rows, run.counts.rows);
  await plain.close();
});

test('markup in texts of files stays text', async () => {
  const bad = '<img src=x onerror="window.hacked=1"></script><script>window.hacked=2</script>';
  const report: ReportData = {
    ...data,
    machine: {
      ...data.machine,
      name: bad,
      file: bad,
      axes: data.machine.axes.map((axis) => ({ ...axis, name: bad + axis.name })),
    },
    run: {
      ...run,
      toolpath: { ...run.toolpath, file: bad },
      command: [bad],
      options: [{ name: bad, value: bad }],
      outputs: [{ kind: bad, path: bad }],
      operations: run.operations.map((operation) => ({ ...operation, name: bad })),
      events: run.events.map((event) => ({ ...event, sentence: bad })),
    },
  };
  const { page, complaints } = await openPage(browser, withData(file, 'markup', report));
  await page.keyboard.press('n');
  assert.equal(await page.evaluate(() => (window as { hacked?: number }).hacked), undefined);
  assert.equal(await page.textContent('h1'), bad);
  assert.ok((await page.textContent('#readout'))!.includes(bad));
  assert.ok((await page.textContent('.announcement'))!.includes(bad));
  assert.equal(await page.locator('main img, main script').count(), 0);
  assert.ok((await page.evaluate(() => document.documentElement.scrollWidth)) <= 1280);
  assert.deepEqual(complaints, []);
});

test('an operation of the program’s own reading that is named in markup stays text', async () => {
  const toolpath = artefact('markup.cl');
  writeFileSync(
    toolpath,
    'UNITS/MM\nMULTAX/ON\nTOOL PATH/<img src=x onerror=alert(1)></script>,TOOL,A\nTLDATA/MILL,8.0,4.0,100.0,0.0,0.0\n' +
      'RAPID\nGOTO/0,0,60,0.1,0,0.994987\nFEDRAT/MMPM,500\nGOTO/10,0,50,0.1,0,0.994987\n',
  );
  const made = solve('operation', { machine: SAMPLES[0]!.machine, toolpath, more: [] });
  const { page, complaints } = await openPage(browser, made);
  assert.ok((await page.textContent('#figures'))!.includes('<img src=x onerror=alert(1)></script>'));
  assert.deepEqual(complaints, []);
});

test('each operation has its part and its tool', async () => {
  // A second part beside the first of the gantry, on which the second operation runs.
  const { toolpath } = SAMPLES[2]!;
  const machine = artefact('two-parts.toml');
  const second =
    '[[mount]]\nname = "second"\nkind = "part"\nparent = "base"\norigin = [150, 0, 120]\n' +
    'z_axis = [0, 0, 1]\nx_axis = [1, 0, 0]\n[[stream]]\nid = 2\ntool = "spindle"\npart = "second"\n';
  writeFileSync(machine, readFileSync(join(ROOT, SAMPLES[2]!.machine), 'utf8') + second);
  const two = solve('two-parts', { machine, toolpath, more: ['--operation-stream', 'FINISHING THE WALL=2'] });
  const { operations } = readData(two).run!;
  const { page, complaints } = await openPage(browser, two);
  const drawn = (): Promise<string[]> =>
    page.evaluate(() => {
      const names = window.trunnion!.things().map(({ name }) => name);
      return names.filter((name, index) => name.startsWith('path on') && names[index + 1] === 'toolpath');
    });
  assert.deepEqual(new Set(await drawn()), new Set(['path on bed']));
  const other = operations.find(({ stream }) => stream === 2)!;
  await page.evaluate((first) => window.trunnion!.goTo!(first), other.firstRow);
  assert.deepEqual(new Set(await drawn()), new Set(['path on second']));
  assert.ok((await page.textContent('#readout'))!.includes(other.name));
  const poses = await page.evaluate(() => window.trunnion!.comparePoses!());
  assert.ok(poses.position < 1e-5, `${poses.position} mm`);
  assert.deepEqual(complaints, []);
});

test('data that this page does not know, and rows that there are none of', async () => {
  const context = await browser.newContext();
  const page = await context.newPage();
  await page.goto(`file://${withData(file, 'format', { ...data, format: 99 })}`);
  assert.match((await page.textContent('[role=alert]'))!, /cannot be shown: the data have format 99/);

  const columns = Object.fromEntries(Object.keys(run.rows.columns).map((name) => [name, pack([], 0)]));
  const none = { ...run, rows: { ...run.rows, count: 0, columns }, events: [], operations: [] };
  const { page: empty, complaints } = await openPage(
    browser,
    withData(file, 'empty', { ...data, run: none }),
  );
  assert.equal(await empty.locator('#jog').count(), 1);
  assert.ok((await empty.textContent('#figures'))!.includes(run.toolpath.sha256));
  assert.deepEqual(complaints, []);
});

test('a long run opens at once and scrubs', async () => {
  // Long enough to fall behind if anything is made for each row.
  const count = 100_000;
  const report = longRun(data, count);
  const path = withData(file, 'long', report);
  assert.ok(statSync(path).size < 8_000_000, `${statSync(path).size} bytes`);
  const { page, complaints } = await openPage(browser, path);
  const decoded = await page.evaluate(() => window.trunnion!.decodeMilliseconds!);
  assert.ok(decoded < 1500, `${decoded} ms`);
  assert.ok((await page.evaluate(() => document.querySelectorAll('*').length)) < 3000);
  assert.ok((await page.evaluate(() => window.trunnion!.plotPoints!())).every((points) => points < 10_000));
  await page.keyboard.press('End');
  assert.equal(await tableRow(page), count - 1);
  assert.deepEqual(complaints, []);
});
