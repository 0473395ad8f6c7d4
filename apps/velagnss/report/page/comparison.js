// Several inputs side by side: a column for each of them.
const Comparison = (() => {
  'use strict';

  const number = (value, digits = 0, unit = '') => Table.cell(value, Format.withUnit(value, digits, unit));
  const text = (value) => Table.cell(undefined, value ?? Format.kMissing);
  const percent = (value) => number(value, 1, '%');
  const meters = (value) => Table.cell(value, Format.length(value));
  const seconds = (value) => Table.cell(value, Format.duration(value));

  // The receiver that an input is compared by: that of its sentences, or its first station.
  const receiver = (input) => input.receivers[0];

  function bestFix({ fix } = {}) {
    const total = fix?.epochs.reduce((sum, count) => sum + count, 0);
    if (!total) return null;
    const most = fix.epochs.indexOf(Math.max(...fix.epochs));
    return `${fix.kinds[most]} (${Format.number((100 * fix.epochs[most]) / total)} %)`;
  }

  function meanSignal({ satellites = [] } = {}) {
    const signals = satellites
      .flatMap((satellite) => satellite.signals)
      .filter(({ count, mean }) => count > 0 && mean !== null);
    const count = signals.reduce((sum, signal) => sum + signal.count, 0);
    return count ? signals.reduce((sum, signal) => sum + signal.count * signal.mean, 0) / count : null;
  }

  const kRows = [
    ['First time', ({ stat }) => text(Format.instant(stat.time?.first))],
    ['Last time', ({ stat }) => text(Format.instant(stat.time?.last))],
    ['Duration', ({ stat }) => seconds(stat.time?.duration_s)],
    ['Bytes', ({ stat }) => number(stat.bytes.total)],
    ['Frames', ({ stat }) => number(stat.frames.good)],
    ['Frames decoded', ({ stat }) => number(stat.frames.decoded)],
    ['Bad frames', ({ stat }) => percent(stat.frames.bad_percent)],
    ['Bytes in no frame', ({ stat }) => number(stat.bytes.damaged)],
    ['Gaps', ({ stat }) => number(stat.time?.gap_count)],
    ['Epochs', (input) => number(receiver(input)?.epochs)],
    ['Positions', (input) => number(receiver(input)?.positions)],
    ['Most frequent fix', (input) => text(bestFix(receiver(input)))],
    ['Satellites in view, mean', (input) => number(Data.mean(receiver(input)?.in_view?.all), 1)],
    ['Satellites used, mean', (input) => number(Data.mean(receiver(input)?.used?.all), 1)],
    ['C/N0, mean', (input) => number(meanSignal(receiver(input)), 1, 'dB-Hz')],
    ['HDOP, mean', (input) => number(Data.mean(receiver(input)?.dop?.hdop), 2)],
    ['Half of the positions within', (input) => meters(receiver(input)?.position?.radius_50_m)],
    ['95 % of the positions within', (input) => meters(receiver(input)?.position?.radius_95_m)],
    ['Half within, of the station', (input) => meters(receiver(input)?.computed?.horizontal_50_m)],
    ['95 % within, of the station', (input) => meters(receiver(input)?.computed?.horizontal_95_m)],
    ['Latency, median', (input) => seconds(input.latency?.p50_s)],
    ['Satellites with ephemerides', (input) => number(new Set(input.ephemerides.map(({ name }) => name)).size)],
  ];

  const isMissing = (content) => content.text === Format.kMissing;

  // Rows that no input has a value for are left out.
  function table(inputs) {
    const rows = kRows
      .map(([name, show]) => [name, ...inputs.map(show)])
      .filter(([, ...cells]) => !cells.every(isMissing));
    return Table.make({
      name: 'comparison',
      caption: 'Inputs compared',
      columns: ['Value', ...inputs.map(({ label }) => ({ text: label, number: true }))],
      rows,
    });
  }

  return { table };
})();
