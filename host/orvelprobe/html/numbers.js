'use strict';
// Numbers as the figures of the page carry them, and as people read them. A figure has single numbers
// as data attributes and columns of numbers in a text block; no text from a media file is in either.

// ---- numbers in

// Base64 over integers of seven bits a byte, the lowest first, the sign in the lowest bit.
function column(text) {
  const bytes = atob(text);
  const values = [];
  for (let i = 0; i < bytes.length;) {
    let value = 0, scale = 1, byte;
    do {
      byte = bytes.charCodeAt(i++);
      value += (byte & 127) * scale;
      scale *= 128;
    } while (byte > 127);
    values.push(value % 2 ? -(value + 1) / 2 : value / 2);
  }
  return values;
}

function sums(values) {
  let sum = 0;
  return values.map(value => sum += value);
}

function read(figure) {
  const data = {};
  for (const [name, value] of Object.entries(figure.dataset)) data[name] = Number(value);
  for (const line of figure.querySelector('script').textContent.trim().split('\n')) {
    const [name, text] = line.split(' ');
    data[name] = column(text || '');
  }
  return data;
}

// First index whose value is not below the one that is looked for.
function lowerBound(values, wanted) {
  let from = 0, to = values.length;
  while (from < to) {
    const middle = (from + to) >> 1;
    if (values[middle] < wanted) from = middle + 1;
    else to = middle;
  }
  return from;
}

// ---- numbers out

const count = value => Math.round(value).toLocaleString('en-US');

function withUnit(value, units) {
  let unit = 0, size = Math.abs(value);
  while (size >= 1000 && unit + 1 < units.length) {
    size /= 1000;
    unit++;
  }
  const digits = unit === 0 || Number.isInteger(size) ? 0 : size < 10 ? 2 : size < 100 ? 1 : 0;
  return (value < 0 ? '-' : '') + String(Number(size.toFixed(digits))) + ' ' + units[unit];
}
const bytes = value => withUnit(value, ['B', 'kB', 'MB', 'GB', 'TB']);
const bits = value => withUnit(value, ['b/s', 'kb/s', 'Mb/s', 'Gb/s', 'Tb/s']);

// "1:02:03.25" with as many decimals as steps of `step` microseconds need.
function clock(us, step) {
  const decimals = Math.min(6, Math.max(0, Math.ceil(6 - Math.log10(step) - 1e-9)));
  const seconds = Math.abs(us) / 1e6;
  const rounded = Number(seconds.toFixed(decimals));
  const hours = Math.floor(rounded / 3600), minutes = Math.floor(rounded / 60) % 60;
  const rest = (rounded - hours * 3600 - minutes * 60).toFixed(decimals);
  return (us < 0 && rounded > 0 ? '-' : '') + (hours ? count(hours) + ':' : '') +
      (hours ? String(minutes).padStart(2, '0') : minutes) + ':' +
      rest.padStart(decimals ? decimals + 3 : 2, '0');
}

// The least of 1, 2, 5, 10, ... that is not below `least`.
function decimalStep(least) {
  const power = 10 ** Math.floor(Math.log10(least));
  return [1, 2, 5, 10].map(factor => factor * power).find(step => step >= least * 0.999999);
}

function timeStep(least) {
  const minute = 60e6, hour = 3600e6;
  const steps = [1e6, 2e6, 5e6, 10e6, 15e6, 30e6, minute, 2 * minute, 5 * minute, 10 * minute,
    15 * minute, 30 * minute, hour, 2 * hour, 3 * hour, 6 * hour, 12 * hour, 24 * hour];
  if (least <= 0.5e6) return Math.max(1, decimalStep(least));
  return steps.find(step => step >= least) || decimalStep(least / hour) * hour;
}
