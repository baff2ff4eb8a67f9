/// How long a report of a million rows takes to open, and a frame of scrubbing through it. Figures, no
/// verdict: `npm run measure`, or with another number of rows in ROWS; WEBGL=no leaves the drawing out.

import { statSync } from 'node:fs';
import { test } from 'node:test';
import { openBrowser, openPage } from '../support/browser.ts';
import { SAMPLES, readData, solve, withData } from '../support/samples.ts';
import { longRun } from '../support/synthetic.ts';

test('a long run', async () => {
  const rows = Number(process.env['ROWS'] ?? 1_000_000);
  const file = solve('measure', SAMPLES[0]!);
  const path = withData(file, 'measured', longRun(readData(file), rows));
  const browser = await openBrowser(process.env['WEBGL'] !== 'no');
  const began = performance.now();
  const { page, complaints } = await openPage(browser, path);
  const opened = performance.now() - began;
  const decoded = await page.evaluate(() => window.trunnion!.decodeMilliseconds!);
  const frames = await page.evaluate(async () => {
    const { goTo, rowCount } = window.trunnion!;
    const frame = (): Promise<number> => new Promise((resolve) => requestAnimationFrame(resolve));
    const taken: number[] = [];
    let last = await frame();
    for (let step = 0; step < 60; ++step) {
      goTo!(Math.floor((step / 60) * rowCount));
      const now = await frame();
      taken.push(now - last);
      last = now;
    }
    return taken.sort((a, b) => a - b);
  });
  const megabytes = statSync(path).size / 1e6;
  console.log(
    `${rows} rows, ${megabytes.toFixed(1)} MB: opened in ${Math.round(opened)} ms, of which decoding ` +
      `${Math.round(decoded)} ms; scrubbing, a frame takes ${Math.round(frames[30]!)} ms in the middle, ` +
      `${Math.round(frames[59]!)} ms at most; ${complaints.length} complaints`,
  );
  await browser.close();
});
