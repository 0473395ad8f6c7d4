// Values over time as lines: the mean of each bin as a line, its least and greatest value as a band.
const Lines = (() => {
  'use strict';

  const kBandAlpha = 0.22;
  const kFadedAlpha = 0.25;
  const kFewLines = 8; // whose values are shown all at once
  const kTableWidth = 12; // lines in a table

  const valueText = (line, bin, digits) => {
    const [min, mean, max] = [line.min[bin], line.mean[bin], line.max[bin]];
    return (
      Format.number(mean, digits) +
      (min === max ? '' : ` (${Format.number(min, digits)} to ${Format.number(max, digits)})`)
    );
  };

  class Content {
    // lines: [{ label, min, mean, max, style: { color, dash, width } }]
    // options: name, title, note, label, unit, digits, whole (numbers of things), fromZero, controls, legend
    constructor(lines, options) {
      Object.assign(this, { labelWidth: 46, digits: 1, things: 'lines', note: options.unit }, options);
      this.chosen = null;
      this.table = () => this.makeTable();
      this.setLines(lines);
    }

    setLines(lines) {
      this.lines = lines;
      this.series = lines.map((line) => ({ label: line.label, values: line.mean }));
      if (!lines.some((line) => line.label === this.chosen)) this.chosen = null;
    }

    range(first, last) {
      let [low, high] = this.fromZero ? [0, 0] : [Infinity, -Infinity];
      for (const line of this.lines) {
        for (let bin = first; bin <= last; bin += 1) {
          if (line.mean[bin] === null) continue;
          low = Math.min(low, line.min[bin]);
          high = Math.max(high, line.max[bin]);
        }
      }
      if (low > high) [low, high] = [0, 1];
      const margin = 0.06 * (high - low) || 1;
      return [this.fromZero && low === 0 ? 0 : low - margin, high + margin];
    }

    ticks(low, high, count) {
      const all = Svg.ticks(low, high, count);
      const step = all.length > 1 ? all[1] - all[0] : 1;
      const digits = Math.max(0, -Math.floor(Math.log10(step) + 1e-9));
      // None at the very bottom, where the first time is.
      return all
        .filter((v) => !this.whole || Number.isInteger(v))
        .map((v) => ({ v, label: v > low ? Format.number(v, digits) : '' }));
    }

    paint(context, chart) {
      const ordered = this.lines.filter((line) => line.label !== this.chosen);
      ordered.forEach((line) => this.paintLine(context, chart, line, this.chosen === null ? 1 : kFadedAlpha));
      const chosen = this.lines.find((line) => line.label === this.chosen);
      if (chosen) this.paintLine(context, chart, { ...chosen, style: { ...chosen.style, width: 2.5, band: true } }, 1);
    }

    paintLine(context, chart, line, alpha) {
      const { color, dash = [], width = 1.5, band = this.lines.length <= kFewLines } = line.style;
      context.save();
      context.strokeStyle = context.fillStyle = Theme.color(color);
      for (const [first, last] of TimeChart.runs(line.mean, 1.5 * Data.usualDistance(line.mean))) {
        const bins = [];
        for (let bin = first; bin <= last; bin += 1) if (line.mean[bin] !== null) bins.push(bin);
        context.globalAlpha = alpha * kBandAlpha;
        if (band && line.min !== line.max) paintBand(context, chart, line, bins);
        context.globalAlpha = alpha;
        context.lineWidth = width;
        context.setLineDash(dash);
        paintRun(context, chart, line.mean, bins);
      }
      context.restore();
    }

    read(bin, y) {
      const present = this.lines.filter((line) => line.mean[bin] !== null);
      if (present.length === 0) return 'no value';
      const single =
        this.chosen !== null
          ? present.filter((line) => line.label === this.chosen)
          : this.lines.length > kFewLines && y !== null
            ? [nearest(present, bin, y)]
            : null;
      if (single?.length === 0) return `no value of ${this.chosen}`;
      if (!single && this.lines.length > kFewLines) return this.readMany(present, bin);
      return (single ?? present)
        .map((line) => `${line.label} ${valueText(line, bin, this.digits)}${this.unit ? ` ${this.unit}` : ''}`)
        .join(', ');
    }

    readMany(present, bin) {
      const low = Math.min(...present.map((line) => line.min[bin]));
      const high = Math.max(...present.map((line) => line.max[bin]));
      return `${present.length} ${this.things}, ${Format.number(low, this.digits)} to ${Format.number(high, this.digits)} ${this.unit}`;
    }

    // The next line; all of them after the last.
    choose(step, chart) {
      const names = [null, ...this.lines.map((line) => line.label)];
      this.setChosen(names[(names.indexOf(this.chosen) + step + names.length) % names.length], chart);
      return this.chosen ?? 'all lines';
    }

    setChosen(label, chart) {
      this.chosen = label;
      this.onChosen?.(label);
      chart.update();
    }

    makeTable() {
      const shown = this.chosen === null ? this.lines : this.lines.filter((line) => line.label === this.chosen);
      const banded = shown.length <= kFewLines && shown.some((line) => line.min !== line.max);
      const parts = banded
        ? [
            ['min', 'least'],
            ['mean', 'mean'],
            ['max', 'greatest'],
          ]
        : [['mean', '']];
      const columns = shown.flatMap((line) =>
        parts.map(([, text]) => ({ text: `${line.label} ${text}`.trim(), number: true })),
      );
      const { grid } = this;
      const bins = Array.from({ length: grid.count }, (_, bin) => bin).filter((bin) =>
        shown.some((line) => line.mean[bin] !== null),
      );
      return Table.make({
        name: `${this.name}-values`,
        caption: `${this.title}${this.unit ? `, ${this.unit}` : ''}`,
        columns: ['Time (UTC)', ...columns],
        rows: bins.map((bin) => [
          grid.text(bin),
          ...shown.flatMap((line) => parts.map(([part]) => Table.numeric(line[part][bin], this.digits))),
        ]),
      });
    }
  }

  function paintBand(context, chart, line, bins) {
    context.beginPath();
    bins.forEach((bin) => context.lineTo(chart.x(bin), chart.y(line.max[bin])));
    bins
      .slice()
      .reverse()
      .forEach((bin) => context.lineTo(chart.x(bin), chart.y(line.min[bin])));
    context.closePath();
    context.fill();
  }

  // A value alone between gaps is a point.
  function paintRun(context, chart, values, bins) {
    context.beginPath();
    if (bins.length === 1) {
      context.arc(chart.x(bins[0]), chart.y(values[bins[0]]), 1.5 * context.lineWidth, 0, 2 * Math.PI);
      context.fill();
      return;
    }
    bins.forEach((bin) => context.lineTo(chart.x(bin), chart.y(values[bin])));
    context.stroke();
  }

  function nearest(lines, bin, y) {
    return lines.reduce((best, line) => (Math.abs(line.mean[bin] - y) < Math.abs(best.mean[bin] - y) ? line : best));
  }

  // A line of a series of the report.
  const line = (label, series, grid, style) => ({ label, ...Data.expand(series, grid.count), style });

  function chart(group, lines, options) {
    const legend =
      lines.length <= kFewLines && lines.length > 1
        ? Svg.legend(lines.map(({ label, style }) => ({ style, text: label })))
        : undefined;
    const label = `${options.title}, a chart over time${options.unit ? ` in ${options.unit}` : ''}. ${summary(lines, options)}`;
    return new TimeChart.Chart(group, new Content(lines, { legend, label, grid: group.grid, ...options }));
  }

  // What a screen reader says about the chart as a whole.
  function summary(lines, { digits = 1, unit = '' }) {
    if (lines.length > kFewLines) return `${lines.length} lines.`;
    return lines
      .map((one) => {
        const low = one.min.reduce((least, value) => (value !== null && value < least ? value : least), Infinity);
        const high = one.max.reduce((most, value) => (value !== null && value > most ? value : most), -Infinity);
        return `${one.label}: ${Format.number(low, digits)} to ${Format.number(high, digits)} ${unit}`.trim();
      })
      .join('; ');
  }

  return { chart, line };
})();
