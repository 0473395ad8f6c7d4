// What the tables of a page must show: their rows, worked out from the numbers of the report.

// Systems come in this order, their satellites by number.
const systems = ['gps', 'glonass', 'galileo', 'beidou', 'qzss', 'navic', 'sbas'];
const rank = (system) => systems.indexOf(system.toLowerCase());
const inOrder = (satellites) => satellites.slice().sort((a, b) => rank(a.system) - rank(b.system) || a.number - b.number);

const first = (list) => list[0];
const last = (list) => list[list.length - 1];
const numbersOf = (object, ...members) => members.map((member) => object?.[member] ?? null);

/** The bins of a series' values: `runs` counts bins with and without a value in turn; without it there is no gap. */
function binsOf({ first: from, max, runs = [max.length] }) {
  const bins = [];
  let bin = from;
  runs.forEach((count, i) => {
    for (const end = bin + count; bin < end; ++bin) if (i % 2 === 0) bins.push(bin);
  });
  return bins;
}

/** Least, mean and greatest values of a series by bin. */
function spread({ max, min = max, mean = max, ...where }) {
  return new Map(binsOf({ max, ...where }).map((bin, i) => [bin, [min[i], mean[i], max[i]]]));
}

/** A row for each bin with a value: least, mean and greatest value of each series, or only means where all are the same. */
function seriesRows(...series) {
  const present = series.filter((one) => one?.max.length > 0);
  const isBanded = present.length <= 8 && present.some((one) => one.min || one.mean);
  const values = present.map(spread);
  const bins = [...new Set(values.flatMap((one) => [...one.keys()]))];
  const cells = (triple) => (isBanded ? triple ?? [null, null, null] : [triple?.[1] ?? null]);
  return bins.map((bin) => values.flatMap((one) => cells(one.get(bin))));
}

const messageSteps = (row) => numbersOf(row, 'usual_step_s', 'longest_gap_s', 'gap_count');
const isTimed = ({ rate }) => rate?.max.length > 0;
const counted = (byName) => Object.keys(byName).sort((a, b) => rank(a) - rank(b)).map((name) => byName[name]);  // all, then systems

const ofInput = {
  messages: ({ stat, messages }) => stat.messages.map((row) => [row.message,
    ...numbersOf(row, 'count', 'decoded', 'faults', 'per_second'),
    ...messageSteps(messages.find(({ protocol, message }) => protocol === row.protocol && message === row.message))]),
  'message-steps': ({ messages }) => messages.filter(isTimed).map((row) => [row.message, row.count, ...messageSteps(row)]),
  gaps: ({ gaps }) => gaps.map(({ seconds }) => [seconds]),
  ephemerides: ({ ephemerides }) => ephemerides.map((row) => [row.name, ...numbersOf(row, 'count', 'issues', 'issue', 'age_s')]),
  integrity: ({ integrity }) => integrity.events.map(({ offset, length }) => [offset, length ?? null]),
  'not-decoded': (input) => input.not_decoded.map((row) => [row.message, ...numbersOf(row, 'count', 'bytes', 'share_percent')]),
  'latency-values': ({ latency }) => seriesRows(latency?.series),
  'damage-values': ({ integrity }) => seriesRows(integrity.damaged_bytes),
};

const signals = ({ satellites }) => satellites.flatMap(({ name, signals: all }) => all.map((signal) => ({ ...signal, satellite: name })));
const tracked = ({ satellites }) => satellites.some(({ track }) => track.length > 0);

const ofReceiver = {
  sky: (receiver) => (tracked(receiver) ? receiver.satellites : []).map(({ name, epochs, used, track }) => [name, epochs, used,
    ...[first(track), last(track)].flatMap((point) => point?.slice(1, 3) ?? [null, null]),
    track.length ? Math.max(...track.map(([, , elevation]) => elevation)) : null]),
  cn0: (receiver) => signals(receiver).map((signal) => [signal.satellite, ...numbersOf(signal, 'count', 'min', 'mean', 'max')]),
  'cn0-values': ({ satellites }) => seriesRows(...inOrder(satellites).map((satellite) => satellite.signals.find(({ cn0 }) => cn0)?.cn0)),
  elevation: ({ elevation }) => (elevation ?? []).flatMap(({ bands }) => bands.map((band) => numbersOf(band, 'count', 'min', 'mean', 'max'))),
  'in-view-values': (receiver) => seriesRows(...counted(receiver.in_view ?? {})),
  'used-values': (receiver) => seriesRows(...counted(receiver.used ?? {})),
  fix: ({ fix }, { bins }) => (fix?.periods ?? []).map(([from, to]) => [(to - from + 1) * bins.step_s]),
  'accuracy-values': ({ accuracy }) => seriesRows(accuracy?.horizontal_m, accuracy?.vertical_m),
  'dop-values': ({ dop }) => seriesRows(dop?.pdop, dop?.hdop, dop?.vdop),
  track: ({ position }) => (position?.track ?? []).map(([, east, north]) => [east, north]),
  'speed-values': ({ position }) => seriesRows(position?.speed_m_per_s),
  scatter: ({ position }) => position?.scatter ?? [],
  'height-values': ({ position }) => seriesRows(position?.height),
  'station-values': ({ computed }) => seriesRows(computed?.north_m, computed?.east_m, computed?.up_m),
  'station-scatter': ({ computed }) => computed?.scatter ?? [],
};

const comparable = (rows) => rows.map((row) => JSON.stringify(row)).sort();

/** By name, the rows of all its tables in any order: charts and tables may be split and sorted. */
export function expectedTables({ inputs }) {
  const all = {};
  const add = (name, rows) => { if (rows.length > 0) all[name] = [...all[name] ?? [], ...rows]; };
  for (const input of inputs) {
    for (const [name, rows] of Object.entries(ofInput)) add(name, rows(input));
    for (const receiver of input.receivers)
      for (const [name, rows] of Object.entries(ofReceiver)) add(name, rows(receiver, input));
  }
  return Object.fromEntries(Object.entries(all).map(([name, rows]) => [name, comparable(rows)]));
}

/** The same of a page whose tables are open. A row begins with its heading unless that is an instant or a running number. */
export async function shownTables(page) {
  const all = await page.evaluate(() => {
    const value = (cell) => ('value' in cell.dataset ? Number(cell.dataset.value) : null);
    const found = {};
    for (const table of document.querySelectorAll('table[data-table]')) {
      const rows = [...table.tBodies[0].rows].map(({ cells: [heading, ...cells] }) =>
        ['value' in heading.dataset ? value(heading) : heading.textContent, ...cells.filter((cell) => cell.matches('.number')).map(value)]);
      found[table.dataset.table] = [...found[table.dataset.table] ?? [], ...rows];
    }
    return found;
  });
  delete all.comparison;
  delete all['rates-values'];
  const named = ['messages', 'message-steps', 'ephemerides', 'integrity', 'not-decoded', 'sky', 'cn0'];
  return Object.fromEntries(Object.entries(all).map(([name, rows]) =>
    [name, comparable(named.includes(name) ? rows : rows.map((row) => row.slice(1)))]));
}

/** Cells whose text is another number than their value. */
export function misprints() {
  const isOther = (cell) => {
    const text = cell.textContent.replaceAll('\u2212', '-').replaceAll('\u202f', '');
    const [, number, decimals = ''] = text.match(/^(-?\d+(?:\.(\d+))?)[^a-z]*$/) ?? [];
    return number && Math.abs(number - cell.dataset.value) > 0.5000001 * 10 ** -decimals.length;
  };
  return [...document.querySelectorAll('td[data-value]')].filter(isOther).map((cell) => `${cell.textContent}: ${cell.dataset.value}`);
}
