// A picture of the top of a report: picture.mjs REPORT PNG

import { launch, open } from './browser.mjs';

const [file, picture] = process.argv.slice(2);
const browser = await launch();
const { page, complaints } = await open(browser, file, { width: 1600 });
await page.screenshot({ path: picture, fullPage: true, clip: { x: 0, y: 0, width: 1600, height: 1160 } });
await browser.close();
if (complaints.length > 0) throw new Error(complaints.join('\n'));
