// The data of the report: its inputs, their grid of time, and series on that grid.
const Data = (() => {
  'use strict';

  const report = JSON.parse(document.getElementById('report').textContent);

  // How the page shows each satellite system: a color of the style sheet, a marker and a line style, so that no color
  // is needed to tell systems apart.
  const kSystems = [
    { key: 'gps', name: 'GPS', marker: 'circle', dash: [] },
    { key: 'glonass', name: 'GLONASS', marker: 'square', dash: [7, 3] },
    { key: 'galileo', name: 'Galileo', marker: 'triangle', dash: [2, 2] },
    { key: 'beidou', name: 'BeiDou', marker: 'diamond', dash: [8, 3, 2, 3] },
    { key: 'qzss', name: 'QZSS', marker: 'inverted', dash: [12, 4] },
    { key: 'navic', name: 'NavIC', marker: 'cross', dash: [4, 4] },
    { key: 'sbas', name: 'SBAS', marker: 'plus', dash: [1, 3] },
  ];
  const kOtherSystem = { key: 'other', name: 'other', marker: 'circle', dash: [1, 2] };

  function system(name) {
    const key = String(name).toLowerCase();
    return kSystems.find((row) => row.key === key) ?? { ...kOtherSystem, name: String(name) };
  }

  // In the order of the table above.
  const systemRank = (name) => kSystems.indexOf(system(name));
  const systemOrder = (a, b) => systemRank(a) - systemRank(b);
  const bySystem = (a, b) => systemOrder(a.system, b.system) || a.number - b.number;

  // The bins of an input as times. Without a date, times are those of a day that has none.
  class Grid {
    constructor(bins) {
      this.count = bins.count;
      this.step = bins.step_s * 1000;
      this.hasDate = bins.has_date;
      this.start = bins.has_date ? Date.parse(bins.start) : bins.start_s * 1000;
    }
    time(bin) {
      return this.start + bin * this.step;
    }
    bin(time) {
      return Math.min(this.count - 1, Math.max(0, Math.round((time - this.start) / this.step)));
    }
    get end() {
      return this.time(this.count - 1);
    }
    text(bin) {
      const time = this.time(bin);
      return (this.hasDate ? `${Format.date(time)} ` : '') + Format.clock(time);
    }
    // A bin of more than a second is a span of time.
    span(bin) {
      return this.step > 1000 ? `${this.text(bin)} to ${Format.clock(this.time(bin + 1))}` : this.text(bin);
    }
  }

  // The bins of a series. Every second run of bins has no values.
  function binsOf(series) {
    const bins = [];
    let bin = series.first;
    (series.runs ?? [series.max.length]).forEach((length, i) => {
      if (i % 2 === 0) for (let k = 0; k < length; k += 1) bins.push(bin + k);
      bin += length;
    });
    return bins;
  }

  // A series as arrays over the whole grid; null where it has no value.
  function expand(series, count) {
    const bins = binsOf(series);
    const spread = (values) => {
      const all = new Array(count).fill(null);
      values.forEach((value, i) => (all[bins[i]] = value));
      return all;
    };
    const max = spread(series.max);
    return { max, min: series.min ? spread(series.min) : max, mean: series.mean ? spread(series.mean) : max };
  }

  const hasValues = (series) => Boolean(series);

  // Mean of the means, each bin once.
  function mean(series) {
    const values = series?.mean ?? series?.max ?? [];
    return values.length ? values.reduce((sum, value) => sum + value, 0) / values.length : null;
  }

  // The most frequent distance between values that follow each other: data that come every 30 s on a grid of 1 s have no
  // gaps.
  function usualDistance(values) {
    const counts = new Map();
    let last = null;
    values.forEach((value, bin) => {
      if (value === null) return;
      if (last !== null) counts.set(bin - last, (counts.get(bin - last) ?? 0) + 1);
      last = bin;
    });
    return [...counts].reduce((best, row) => (row[1] > best[1] ? row : best), [1, 0])[0];
  }

  // A file without its directories, if no other input has the same name then.
  function label({ name }) {
    const last = (path) => path.split('/').pop() || path;
    return report.inputs.filter((other) => last(other.name) === last(name)).length === 1 ? last(name) : name;
  }

  const inputs = report.inputs.map((input) => ({
    ...input,
    label: label(input),
    grid: input.bins ? new Grid(input.bins) : null,
  }));

  const receiverName = (receiver) =>
    receiver.station === null ? 'sentences' : `reference station ${receiver.station}`;

  return {
    report,
    inputs,
    kSystems,
    system,
    systemOrder,
    bySystem,
    expand,
    hasValues,
    mean,
    usualDistance,
    receiverName,
  };
})();
