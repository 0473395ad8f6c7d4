// Rows of bars over time: when something was so, or was there.
const Timeline = (() => {
  'use strict';

  const kRowHeight = 20;
  const kAxisHeight = 24;
  const kCharacterWidth = 7;
  const kGreatestLabelWidth = 120;

  class Content {
    // rows: [{ label, values: by bin, null where there is nothing, style: { color } }], the first at the top
    // options: name, title, note, label, reads(row, bin): what the cursor shows of a row, table
    constructor(rows, options) {
      Object.assign(this, options);
      this.bars = rows;
      // dygraphs knows a row by its height in the chart.
      this.series = rows.map(({ label, values }, i) => ({
        label,
        values: values.map((value) => (value === null ? null : -i)),
      }));
      this.reaches = rows.map(({ values }) => Data.usualDistance(values));
      const longest = Math.max(...rows.map(({ label }) => label.length));
      this.labelWidth = Math.min(kGreatestLabelWidth, longest * kCharacterWidth + 8);
    }

    range() {
      return [-this.bars.length + 0.5, 0.5];
    }
    ticks() {
      return this.bars.map(({ label }, i) => ({ v: -i, label }));
    }

    paint(context, chart) {
      this.bars.forEach(({ values, style }, i) => {
        context.fillStyle = Theme.color(style.color);
        const top = chart.y(-i + 0.32);
        const height = chart.y(-i - 0.32) - top;
        for (const [first, last] of TimeChart.runs(values, 1.5 * this.reaches[i])) {
          const left = chart.x(first);
          context.fillRect(left, top, Math.max(1, chart.x(last + this.reaches[i]) - left), height);
        }
      });
    }

    read(bin) {
      const texts = this.bars.filter(({ values }) => values[bin] !== null).map((row) => this.reads(row, bin));
      return texts.length ? texts.join(', ') : 'nothing';
    }
  }

  function chart(group, rows, options) {
    const made = new TimeChart.Chart(group, new Content(rows, options));
    made.canvas.style.height = made.plot.style.height = `${rows.length * kRowHeight + kAxisHeight}px`;
    return made;
  }

  return { chart };
})();
