// Numbers, times and lengths as text.
const Format = (() => {
  'use strict';

  const kMissing = '\u2013';
  const kMinus = '\u2212';
  const kThin = '\u202f';

  const isNumber = (value) => typeof value === 'number' && Number.isFinite(value);
  const grouped = (digits) => digits.replace(/\B(?=(\d{3})+$)/g, kThin);

  // With as many decimals as `digits`, thousands apart.
  function number(value, digits = 0) {
    if (!isNumber(value)) return kMissing;
    const [whole, decimals] = Math.abs(value).toFixed(digits).split('.');
    const text = (whole.length > 4 ? grouped(whole) : whole) + (decimals ? `.${decimals}` : '');
    return value < 0 && Number(value.toFixed(digits)) !== 0 ? kMinus + text : text;
  }

  const withUnit = (value, digits, unit) =>
    isNumber(value) ? `${number(value, digits)}${unit ? ` ${unit}` : ''}` : kMissing;

  // Few digits for large values: 0.012, 3.45, 67.8, 912.
  function brief(value) {
    if (!isNumber(value)) return kMissing;
    const size = Math.abs(value);
    return number(value, Number.isInteger(value) || size >= 100 ? 0 : size >= 10 ? 1 : size >= 1 ? 2 : 3);
  }

  const kLengths = [
    [1000, 1000, 'km'],
    [1, 1, 'm'],
    [0.01, 0.01, 'cm'],
    [0, 0.001, 'mm'],
  ];

  // A length in the unit that suits it.
  function length(meters) {
    if (!isNumber(meters)) return kMissing;
    if (meters === 0) return '0 m';
    const [, unit, name] = kLengths.find(([from]) => Math.abs(meters) >= from);
    return `${brief(Number((meters / unit).toPrecision(3)))} ${name}`;
  }

  const kPeriods = [
    [86400, 'd'],
    [3600, 'h'],
    [60, 'min'],
  ];

  // 3 h 25 min; at most two units.
  function duration(seconds) {
    if (!isNumber(seconds)) return kMissing;
    const sign = seconds < 0 ? kMinus : '';
    let rest = Math.abs(seconds);
    if (rest < 60) return `${sign}${brief(Number(rest.toPrecision(3)))} s`;
    rest = Math.round(rest);
    const parts = [];
    for (const [size, name] of [...kPeriods, [1, 's']]) {
      const count = Math.floor(rest / size);
      if (count > 0) parts.push(`${count} ${name}`);
      rest -= count * size;
    }
    return sign + parts.slice(0, 2).join(' ');
  }

  // ISO 8601 as people read it: 2024-05-18 23:57:00 UTC. Texts of another form stay as they are.
  function instant(text) {
    if (!text) return kMissing;
    return /^\d{4}-\d\d-\d\dT/.test(text)
      ? `${text.replace('T', ' ').replace(/Z$/, '')} UTC`
      : text.replace(/Z$/, ' UTC');
  }

  const kMonths = ['Jan', 'Feb', 'Mar', 'Apr', 'May', 'Jun', 'Jul', 'Aug', 'Sep', 'Oct', 'Nov', 'Dec'];
  const two = (value) => String(value).padStart(2, '0');

  // Time of day of milliseconds of UTC, with seconds where they are wanted.
  function clock(milliseconds, seconds = true) {
    const time = new Date(milliseconds);
    return `${two(time.getUTCHours())}:${two(time.getUTCMinutes())}${seconds ? `:${two(time.getUTCSeconds())}` : ''}`;
  }

  const date = (milliseconds) => new Date(milliseconds).toISOString().slice(0, 10);

  // 19 May
  const day = (milliseconds) =>
    `${new Date(milliseconds).getUTCDate()} ${kMonths[new Date(milliseconds).getUTCMonth()]}`;

  function degrees(value, digits = 1) {
    return isNumber(value) ? `${number(value, digits)}\u00b0` : kMissing;
  }

  // 51.478779° N
  const coordinate = (value, [positive, negative], digits = 7) =>
    isNumber(value) ? `${Math.abs(value).toFixed(digits)}\u00b0 ${value < 0 ? negative : positive}` : kMissing;
  const place = (latitude, longitude) => `${coordinate(latitude, 'NS')}, ${coordinate(longitude, 'EW')}`;

  const plural = (count, one, many = `${one}s`) => `${number(count)} ${count === 1 ? one : many}`;

  return {
    kMissing,
    isNumber,
    number,
    withUnit,
    brief,
    length,
    duration,
    instant,
    clock,
    date,
    day,
    degrees,
    place,
    plural,
  };
})();
