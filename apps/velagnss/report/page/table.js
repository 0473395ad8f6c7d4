// Tables of values.
const Table = (() => {
  'use strict';

  const kLong = 60; // characters of a value that needs the width of two

  // A cell is a text, a node, or a number with its text. The number stays readable for programs in data-value.
  const cell = (value, text) => ({ value, text });
  const numeric = (value, digits = 0) => cell(value, Format.number(value, digits));

  function dataCell(content) {
    if (content === null || content === undefined) return Dom.make('td', {}, Format.kMissing);
    if (content instanceof Node || typeof content !== 'object') return Dom.make('td', {}, content);
    return Dom.make('td', { class: 'number', 'data-value': content.value }, content.text);
  }

  function bodyRow([first, ...rest]) {
    const { value, text } = typeof first === 'object' ? first : { text: first };
    return Dom.make('tr', {}, Dom.make('th', { scope: 'row', 'data-value': value }, text), rest.map(dataCell));
  }

  // A column is a text, or { text, number: true } when its cells are numbers.
  function headCell(column) {
    return Dom.make('th', { scope: 'col', class: column.number && 'number' }, column.text ?? column);
  }

  // The first cell of each row is its heading. `name` identifies the table for programs.
  function make({ name, caption, columns, rows }) {
    const table = Dom.make(
      'table',
      { 'data-table': name },
      Dom.make('caption', {}, caption),
      Dom.make('thead', {}, Dom.make('tr', {}, columns.map(headCell))),
      Dom.make('tbody', {}, rows.map(bodyRow)),
    );
    return Dom.make('div', { class: 'scroll', tabindex: 0, role: 'group', 'aria-label': caption }, table);
  }

  // A table that is built when it is opened: thousands of rows would make the page slow.
  function onDemand(summary, build, open = false) {
    const details = Dom.make('details', { open }, Dom.make('summary', {}, summary));
    const fill = () => details.open && details.childElementCount === 1 && details.append(build());
    details.addEventListener('toggle', fill);
    fill();
    return details;
  }

  // Names and values: [['Bytes', '372 291'], ...]. Pairs without a value are left out.
  function pairs(list) {
    return Dom.make(
      'dl',
      {},
      list
        .filter(([, value]) => value !== null && value !== undefined)
        .map(([name, value]) =>
          Dom.make(
            'div',
            { class: value.length > kLong && 'long' },
            Dom.make('dt', {}, name),
            Dom.make('dd', {}, value),
          ),
        ),
    );
  }

  return { make, onDemand, pairs, cell, numeric };
})();
