/// Takes a picture of a report, as it opens, at a row of the middle: picture.mjs REPORT.html PICTURE.png

import { openBrowser, openPage } from '../test/support/browser.ts';

const [report, picture] = process.argv.slice(2);
if (report === undefined || picture === undefined) {
  throw new Error('give a report and the picture to write');
}
const browser = await openBrowser();
const { page } = await openPage(browser, report, { width: 1280, height: 820 });
await page.evaluate(() => window.trunnion?.goTo?.(Math.floor(window.trunnion.rowCount * 0.4)));
await page.screenshot({ path: picture });
await browser.close();
