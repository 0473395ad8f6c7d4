// The report in Chromium: what a reader sees and does, with hostile texts, without a mouse, without script, on paper.

import assert from 'node:assert/strict';
import { createHash } from 'node:crypto';
import { readFileSync, writeFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { after, before, describe, test } from 'node:test';
import { launch, open } from './browser.mjs';
import { makeReports, names } from './reports.mjs';
import { expectedTables, misprints, shownTables } from './tables.mjs';

const axe = readFileSync(createRequire(import.meta.url).resolve('axe-core/axe.min.js'), 'utf8');
const rules = ['wcag2a', 'wcag2aa', 'wcag21a', 'wcag21aa', 'wcag22aa', 'best-practice'];
const kPaperWidth = 718;  // A4 less 1 cm on each side, at 96 dots per inch

// All looks and long walks of the reports that show the most; of the others, those that differ most from each other.
const thorough = ['session', 'several'];
const looks = ['light', 'dark'].flatMap((scheme) => [400, 1600].map((width) => ({ scheme, width })));
const looksOf = (name) => (thorough.includes(name) ? looks : [looks[0], looks[3]]);

const reports = makeReports();
let browser;
before(async () => { browser = await launch(); });
after(() => browser.close());

/** Opens a report, calls `look` with the page, and then wants no complaint about it. */
async function visit(file, options, look) {
  const { page, complaints, close } = await open(browser, file, options);
  try {
    await look(page);
    assert.deepEqual(complaints, []);
  } finally {
    await close();
  }
}

/** Opens the tables, which are built then; of long ones, some rows may be enough to look at. */
async function openTables(page, rows = Infinity) {
  await page.evaluate(() => { for (const details of document.querySelectorAll('details')) details.open = true; });
  await page.waitForFunction(() => [...document.querySelectorAll('details')].every((details) => details.childElementCount > 1));
  await page.evaluate((count) => {
    for (const body of document.querySelectorAll('tbody')) body.replaceChildren(...[...body.rows].slice(0, count));
  }, rows);
}

/** Charts without a line, bar or point, or too small to see. */
function blankCharts() {
  const rgb = (css) => {
    const context = new OffscreenCanvas(1, 1).getContext('2d');
    context.fillStyle = css;
    context.fillRect(0, 0, 1, 1);
    return [...context.getImageData(0, 0, 1, 1).data].slice(0, 3);
  };
  const root = getComputedStyle(document.documentElement);
  const frame = ['--grid', '--rule'].map((name) => rgb(root.getPropertyValue(name)));  // dygraphs draws these without data
  const isFrame = (pixel) => frame.some((color) => color.every((part, i) => Math.abs(part - pixel[i]) < 12));
  const hasInk = (canvas) => {
    const { data } = canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height);
    let count = 0;
    for (let at = 0; at < data.length; at += 4) if (data[at + 3] > 50 && !isFrame(data.subarray(at, at + 3))) count += 1;
    return count > 10;
  };
  const hasShapes = (svg) => [...svg.querySelectorAll('.line, .mark, .dots')].some((shape) => shape.getBoundingClientRect().width > 0);
  const isDrawn = (chart) => {
    const plot = chart.querySelector('[role=img]');
    return plot.getBoundingClientRect().height > 40 &&
      ([...plot.querySelectorAll('canvas')].some(hasInk) || [...plot.querySelectorAll('svg')].some(hasShapes));
  };
  return [...document.querySelectorAll('[data-chart]')].filter((chart) => !isDrawn(chart)).map((chart) => chart.dataset.chart);
}

/** Rules of accessibility that are broken, and where. */
async function faultsOfAccess(page) {
  await page.evaluate(axe);
  const { violations } = await page.evaluate((runOnly) =>
    window.axe.run({ runOnly, resultTypes: ['violations'], preload: false }), rules);
  return violations.flatMap(({ id, nodes }) => nodes.slice(0, 5).map((node) => `${id}: ${node.target}: ${node.failureSummary}`));
}

/** Parts of a page that reach over the side of its window; of nested ones, the outermost. */
function wideParts() {
  const { scrollWidth, clientWidth } = document.documentElement;
  if (scrollWidth <= clientWidth) return [];
  const isWide = (part) => part.getBoundingClientRect().right > clientWidth + 1;
  const parts = [...document.body.querySelectorAll('*')].filter((part) => isWide(part) && !isWide(part.parentElement));
  return [`${scrollWidth} of ${clientWidth} pixels`, ...parts.map((part) => part.outerHTML.slice(0, 200))];
}

/** Charts wider than a sheet, or than what is around them. */
function cutCharts(paperWidth) {
  const width = (part) => part.getBoundingClientRect().width;
  return [...document.querySelectorAll('[data-chart] [role=img]')]
    .filter((plot) => width(plot) > paperWidth || [...plot.querySelectorAll('canvas, svg')].some((each) => width(each) > width(plot) + 1))
    .map((plot) => `${plot.parentElement.dataset.chart}: ${width(plot)} pixels`);
}

/** Elements and attributes in use: hostile texts must not add to them. */
function markup() {
  const found = new Set();
  for (const element of document.querySelectorAll('*')) {
    found.add(element.localName);
    for (const { name } of element.attributes) found.add(`${element.localName} ${name}`);
  }
  return [...found].sort();
}

/** Where Tab leads from the top of the page to its end, and what of that is not as it should be. */
async function walkByTab(page) {
  await page.evaluate(() => {
    const focusable = 'a[href], button, input, select, summary, [tabindex="0"]';
    window.stops = [...document.querySelectorAll(focusable)].filter((each) => each.checkVisibility());
  });
  const faults = [];
  const count = await page.evaluate(() => window.stops.length);
  for (let i = 0; i < count; ++i) {
    await page.keyboard.press('Tab');
    faults.push(...await page.evaluate((index) => {
      const [wanted, found] = [window.stops[index], document.activeElement];
      const name = `stop ${index}, ${found.localName} ${found.getAttribute('aria-label') ?? found.textContent.slice(0, 40)}`;
      if (wanted !== found) return [`${name}: instead of ${wanted.outerHTML.slice(0, 100)}`];
      const { outlineStyle, outlineWidth, outlineColor } = getComputedStyle(found);
      const box = found.getBoundingClientRect();
      const [x, y] = [Math.max(0, box.left) + 5, (Math.max(0, box.top) + Math.min(innerHeight, box.bottom)) / 2];
      const top = document.elementFromPoint(x, y);
      return [
        (outlineStyle === 'none' || parseFloat(outlineWidth) < 2) && `${name}: no outline`,
        !(top && (found.contains(top) || top.contains(found))) && `${name}: hidden by ${top?.outerHTML.slice(0, 100)}`,
      ].filter(Boolean);
    }, i));
    if (faults.length > 5) break;
  }
  return faults;
}

/** What the keys of a chart do not do: [a fault, ...]. Each key's answer is announced. */
async function faultsOfKeys(page, chart) {
  const plot = chart.locator('[role=img]');
  const press = async (key) => {
    await page.evaluate(() => { document.getElementById('announcer').textContent = ''; });
    await page.keyboard.press(key);
    return page.textContent('#announcer');
  };
  const drawn = () => plot.evaluate(async (each) => {
    const content = [...each.querySelectorAll('canvas')].map((canvas) => canvas.toDataURL()).join() || each.innerHTML;
    const digest = await crypto.subtle.digest('SHA-256', new TextEncoder().encode(content));
    return new Uint8Array(digest).join();
  });
  await plot.focus();
  const canZoom = await plot.evaluate((each) => each.matches('.time') || Boolean(each.querySelector('.scale-bar')));
  const [right, end, home] = [await press('ArrowRight'), await press('End'), await press('Home')];
  await press('Escape');
  const whole = await drawn();
  const zoomed = await press('+');
  const near = await drawn();
  const reset = await press('0');
  const again = await drawn();
  const closer = await press('+');
  const farther = await press('-');
  return [
    !right && 'right: nothing announced', home !== right && `home: ${home}, but the first step: ${right}`,
    !end && 'end: nothing announced', canZoom && !zoomed && '+: nothing announced', canZoom && near === whole && '+: not drawn',
    canZoom && (!reset || reset === zoomed) && '0: nothing announced', again !== whole && '0: not drawn as before',
    canZoom && (!farther || farther === closer) && '-: nothing announced', (await drawn()) !== whole && '-: not drawn as before',
  ].filter(Boolean);
}

/** The same numbers with a hostile text added to each text but names of systems, kinds and instants. */
function withHostileTexts(html) {
  const payload = '"\'><img src=x onerror=intruder()><script>intruder()</script>\u2028\u202e';
  const spoil = (key, value) =>
    typeof value === 'string' && !/^\d{4}-\d\d-\d\dT|^\d\d:/.test(value) ? `${value}${payload}` : value;
  const escape = (text) => text.replace(/[<>&\u2028]/g, (each) => `\\u${each.charCodeAt().toString(16).padStart(4, '0')}`);
  return html.replace(/(<script type="application\/json" id="report">)([^<]*)/,
    (_, tag, json) => tag + escape(JSON.stringify(JSON.parse(json), spoil)));
}

for (const name of names) {
  describe(`report of ${name}`, { concurrency: 2 }, () => {
    const { file, json, stat } = reports[name];

    for (const look of looksOf(name)) {
      test(`${look.scheme}, ${look.width} px: drawn, readable`, () => visit(file, look, async (page) => {
        assert.deepEqual(await page.evaluate(blankCharts), []);
        await openTables(page, 3);
        assert.deepEqual(await faultsOfAccess(page), []);
      }));
    }

    test('360 px: nothing to scroll sideways', () => visit(file, { width: 360 }, async (page) => {
      await openTables(page);
      assert.deepEqual(await page.evaluate(wideParts), []);
    }));

    test('the policy allows the blocks in the page and nothing else', () => visit(file, {}, async (page) => {
      const policy = await page.getAttribute('meta[http-equiv="Content-Security-Policy"]', 'content');
      const blocks = await page.evaluate(() =>
        [...document.querySelectorAll('script:not([type="application/json"]), style')].map((block) => [block.localName, block.textContent]));
      const hash = (text) => `'sha256-${createHash('sha256').update(text).digest('base64')}'`;
      const sources = (kind) => [`${kind}-src`, ...blocks.filter(([tag]) => tag === kind).map(([, text]) => hash(text))].join(' ');
      const wanted = ["default-src 'none'", sources('script'), sources('style'), "base-uri 'none'", "form-action 'none'"];
      assert.deepEqual(policy.split('; ').sort(), wanted.sort());
    }));

    test('the page has the numbers of --json, and those of stat', () => visit(file, {}, async (page) => {
      assert.deepEqual(JSON.parse(await page.textContent('#report')), json);
      assert.deepEqual(json.inputs.map((input) => input.stat), stat);
    }));

    test('the tables have them', () => visit(file, {}, async (page) => {
      await openTables(page);
      assert.deepEqual(await shownTables(page), expectedTables(json));
      assert.deepEqual(await page.evaluate(misprints), []);
    }));

    if (thorough.includes(name)) test('by keyboard: a visible way through the page', () => visit(file, {}, async (page) => {
      assert.deepEqual(await walkByTab(page), []);
    }));

    if (name === 'session') test('by keyboard: charts', () => visit(file, {}, async (page) => {
      for (const chart of await page.locator('[data-chart]').all())
        assert.deepEqual(await faultsOfKeys(page, chart), [], await chart.getAttribute('data-chart'));
    }));

    if (thorough.includes(name)) test('on paper: no chart is cut', () => visit(file, {}, async (page) => {
      await page.emulateMedia({ media: 'print' });
      assert.deepEqual(await page.evaluate(blankCharts), []);
      assert.deepEqual(await page.evaluate(cutCharts, kPaperWidth), []);
      assert.ok((await page.pdf({ format: 'A4' })).length > 10000);
    }));

    test('without script a text says what is missing', () => visit(file, { javaScriptEnabled: false }, async (page) => {
      assert.match(await page.innerText('body'), /JavaScript|script/);
    }));
  });
}

describe('hostile texts', { concurrency: 2 }, () => {
  const { file: plain } = reports.several;
  const spoiled = plain.replace('several', 'spoiled');
  writeFileSync(spoiled, withHostileTexts(readFileSync(plain, 'utf8')));

  const markupOf = async (file) => {
    let found;
    await visit(file, {}, async (page) => {
      await openTables(page);
      found = await page.evaluate(markup);
    });
    return found;
  };

  for (const [what, file] of [['of an input', reports.hostile.file], ['in every text of the data', spoiled]]) {
    test(`${what} remain texts`, async () => {
      const known = await markupOf(plain);
      assert.deepEqual((await markupOf(file)).filter((each) => !known.includes(each)), []);
      await visit(file, {}, async (page) => assert.match(await page.innerText('main'), /<img src=x onerror=intruder\(\)>/));
    });
  }
});
