'use strict';
// Draws the figures: all tracks of a file over one time axis, zoomed together. Times are microseconds.

const GUTTER = 58, MARGIN = 8, BARS = 96, RATES = 60, MARKS = 14, GAP = 12, AXIS = 20, HEAD = 18, MAX_SEEKS = 40;

// ---- numbers

const sums = list => { let sum = 0; return list.map(value => sum += value); };
const count = value => Math.round(value).toLocaleString('en-US');

function withUnit(value, units) {
  let unit = 0;
  for (; value >= 1000 && unit + 1 < units.length; unit++) value /= 1000;
  return Number(value.toFixed(unit && value < 10 ? 2 : unit && value < 100 ? 1 : 0)) + ' ' + units[unit];
}
const bytes = value => withUnit(value, ['B', 'kB', 'MB', 'GB', 'TB']);
const bits = value => withUnit(value, ['b/s', 'kb/s', 'Mb/s', 'Gb/s']);

// "1:02:03.25" with as many decimals as steps of so many microseconds need.
function clock(us, step) {
  const decimals = Math.min(6, Math.max(0, Math.ceil(6 - Math.log10(step) - 1e-9)));
  const all = Number((Math.abs(us) / 1e6).toFixed(decimals));
  const hours = Math.floor(all / 3600), minutes = Math.floor(all / 60) % 60;
  const rest = (all % 60).toFixed(decimals).padStart(decimals ? decimals + 3 : 2, '0');
  return (us < 0 && all > 0 ? '\u2212' : '') +
      (hours ? `${hours}:${String(minutes).padStart(2, '0')}` : minutes) + ':' + rest;
}

// The least good step that is not below `least`: of numbers, and of microseconds.
function decimalStep(least) {
  const power = 10 ** Math.floor(Math.log10(least));
  return [1, 2, 5, 10].map(factor => factor * power).find(step => step >= least * 0.999999);
}
function timeStep(least) {
  if (least <= 0.5e6) return Math.max(1, decimalStep(least));
  return [1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600, 7200, 10800, 21600, 43200, 86400]
      .map(seconds => seconds * 1e6).find(step => step >= least) || decimalStep(least / 3.6e9) * 3.6e9;
}

// First index whose value is not below the one that is looked for.
function lowerBound(values, wanted) {
  let from = 0, to = values.length;
  while (from < to) {
    const middle = (from + to) >> 1;
    [from, to] = values[middle] < wanted ? [middle + 1, to] : [from, middle];
  }
  return from;
}
const make = (tag, properties) => Object.assign(document.createElement(tag), properties);

// ---- a figure

class Plot {
  constructor(figure) {
    this.figure = figure;
    this.data = JSON.parse(figure.querySelector('script').textContent);
    this.data.tracks.forEach(track => this.prepare(track));
    this.view = [this.data.from, this.data.to];
    this.at = null;
    this.canvas = make('canvas', { role: 'img', ariaLabel: 'sample sizes, bitrate and seeks over time' });
    this.values = make('div', { className: 'values',
      textContent: 'Point at the plot, or tap it, for values; drag over it to zoom.' });
    this.range = make('output');
    const button = (textContent, title, onclick) =>
      make('button', { type: 'button', textContent, title, ariaLabel: title, onclick });
    this.buttons = [button('+', 'zoom in', () => this.zoom(0.5)), button('\u2212', 'zoom out', () => this.zoom(2)),
      button('\u2039', 'earlier', () => this.move(-0.5)), button('\u203a', 'later', () => this.move(0.5)),
      button('all', 'show everything', () => this.show(this.data.from, this.data.to))];
    const controls = make('div', { className: 'controls' });
    controls.append(this.range, ...this.buttons);
    figure.prepend(controls, this.canvas, this.values);
    this.listen();
    this.draw();
    new ResizeObserver(() => Math.floor(figure.clientWidth) !== this.width && this.draw()).observe(figure);
  }

  // What follows from the numbers: averages, bitrate, and where times do not follow one another as
  // most of them do.
  prepare(track) {
    const { perBin, max } = track, times = track.times = sums(track.times), last = times.length - 1;
    const sum = track.sum || max, rest = track.count - last * perBin;
    track.mean = sum.map((bytes, i) => bytes / (i === last ? rest : perBin));
    const lengths = times.slice(1).map((us, i) => us - times[i]);
    const forward = lengths.filter(us => us > 0).sort((one, other) => one - other);
    const usual = forward[forward.length >> 1] || 0;
    track.step = usual / perBin;
    track.end = times[last] + Math.min(track.step * rest, 1e6);
    track.rateStep = 1e6 * Math.max(1, Math.ceil(usual / 1e6), Math.ceil((times[last] - times[0]) / 2e10));
    const start = Math.floor(times[0] / track.rateStep), sizes = [];
    sum.forEach((bytes, i) => {
      const slot = Math.floor(times[i] / track.rateStep) - start;
      sizes[slot] = (sizes[slot] || 0) + bytes;
    });
    track.bits = Array.from(sizes, bytes => (bytes || 0) * 8e6 / track.rateStep);
    track.starts = track.bits.map((_, i) => (start + i) * track.rateStep);
    const where = found => lengths.flatMap((us, i) => found(us - usual) ? [[times[i], times[i + 1]]] : []);
    track.gaps = where(more => more > track.step / 2 + 1000);
    track.overlaps = where(more => -more > track.step / 2 + 1000);
    const amount = (list, noun) => `${list.length ? count(list.length) : 'no'} ${noun}${list.length === 1 ? '' : 's'}`;
    this.figure.append(make('figcaption', { textContent: `Track ${track.index}, ${track.name}: ${count(track.count)} samples` +
      (perBin > 1 ? `, ${perBin} a bar, dark up to their average, light up to the largest` : '') +
      (track.keys ? '' : ', all key') + (track.step ? `; typical step ${clock(track.step, 1000)}, ` +
      `${amount(track.gaps, 'gap')}, ${amount(track.overlaps, 'overlap')}` : '') }));
  }

  show(from, to) {
    const { from: first, to: last } = this.data;
    const span = Math.min(Math.max(to - from, Math.min(100, last - first)), last - first);
    from = Math.min(Math.max((from + to - span) / 2, first), last - span);
    this.view = [from, from + span];
    this.draw();
  }
  zoom(factor) { this.show(...this.view.map((us, _, [from, to]) => (us - (from + to) / 2) * factor + (from + to) / 2)); }
  move(share) { this.show(...this.view.map((us, _, [from, to]) => us + (to - from) * share)); }

  x(us) { return GUTTER + (us - this.view[0]) / (this.view[1] - this.view[0]) * this.inner; }
  within(us) { return Math.min(Math.max(this.x(us), GUTTER), GUTTER + this.inner); }
  timeOf(event) {
    const share = (event.clientX - this.canvas.getBoundingClientRect().left - GUTTER) / this.inner;
    return this.view[0] + Math.min(Math.max(share, 0), 1) * (this.view[1] - this.view[0]);
  }

  // Pointing, or a tap, tells what is there; dragging zooms to what was dragged over.
  listen() {
    const on = (name, action) => this.canvas.addEventListener(name, action);
    on('pointerdown', event => {
      if (event.button !== 0) return;
      this.begin = this.timeOf(event);
      this.canvas.setPointerCapture(event.pointerId);
      this.pick(this.begin);
    });
    on('pointermove', event => this.pick(this.timeOf(event)));
    const drop = zooms => {
      const [from, to] = [this.begin, this.at].sort((one, other) => one - other);
      const dragged = zooms && this.begin !== undefined && this.x(to) - this.x(from) > 8;
      this.begin = undefined;
      this.show(...(dragged ? [from, to] : this.view));
    };
    on('pointerup', () => drop(true));
    on('pointercancel', () => drop(false));
    on('dblclick', () => this.show(this.data.from, this.data.to));
  }
  pick(us) {
    this.at = us;
    this.values.textContent = [clock(us, (this.view[1] - this.view[0]) / this.inner),
      ...this.data.tracks.map(track => `track ${track.index}: ${this.valuesOf(track, us)}`)].join('\n');
    this.draw();
  }
  valuesOf(track, us) {
    const i = lowerBound(track.times, us + 1) - 1;
    if (i < 0 || us > Math.max(track.end, track.times[i])) return 'no sample';
    const rate = track.bits[Math.floor((us - track.starts[0]) / track.rateStep)];
    const hit = ranges => ranges.some(([from, to]) => us >= from && us <= to);
    return `${count(track.max[i])} B at ${clock(track.times[i], 1000)}` +
        (track.perBin > 1 ? ` (largest of ${track.perBin}, average ${count(track.mean[i])} B)` : '') + (track.keys && track.keys[i] ? ', key' : '') +
        (rate === undefined ? '' : `, ${bits(rate)} over ${track.rateStep / 1e6} s`) +
        (hit(track.gaps) ? ', gap' : '') + (hit(track.overlaps) ? ', overlap' : '');
  }

  // ---- drawing

  draw() {
    const width = this.width = Math.floor(this.figure.clientWidth), [from, to] = this.view;
    if (!width) return;
    const seeks = this.data.seeks.length ? HEAD + Math.min(this.data.seeks.length, MAX_SEEKS) * MARKS : 0;
    const bottom = this.data.tracks.length * (HEAD + BARS + HEAD + RATES + MARKS + 2 * GAP) + seeks;
    const scale = devicePixelRatio || 1, style = getComputedStyle(document.documentElement);
    this.inner = width - GUTTER - MARGIN;
    this.color = name => style.getPropertyValue('--' + name);
    Object.assign(this.canvas, { width: width * scale, height: (bottom + AXIS) * scale });
    this.canvas.style.height = bottom + AXIS + 'px';
    this.pen = this.canvas.getContext('2d');
    this.pen.scale(scale, scale);
    this.pen.font = '11px system-ui, sans-serif';
    this.grid(bottom, width);
    let y = 0;
    for (const track of this.data.tracks) y = this.track(track, y);
    if (seeks) this.seeks(y);
    if (this.at !== null && this.within(this.at) === this.x(this.at)) this.rect('faint', this.x(this.at), 0, 1, bottom);
    if (this.begin !== undefined) this.rect('select', this.x(this.begin), 0, this.x(this.at) - this.x(this.begin), bottom);
    this.range.textContent = `${clock(from, (to - from) / 500)} to ${clock(to, (to - from) / 500)}`;
    const atStart = from <= this.data.from, atEnd = to >= this.data.to;
    [false, atStart && atEnd, atStart, atEnd, atStart && atEnd].forEach((off, i) => { this.buttons[i].disabled = off; });
  }
  rect(color, x, y, width, height) {
    this.pen.fillStyle = this.color(color);
    this.pen.fillRect(x, y, width, height);
  }
  text(text, x, y, textAlign, color = 'faint') {
    Object.assign(this.pen, { fillStyle: this.color(color), textAlign }).fillText(text, x, y);
  }
  grid(bottom, width) {
    const [from, to] = this.view, step = timeStep((to - from) / Math.max(2, Math.floor(this.inner / 80)));
    for (let us = Math.ceil(from / step) * step; us <= to; us += step) {
      this.rect('grid', Math.round(this.x(us)), 0, 1, bottom);
      if (this.x(us) < width - 16) this.text(clock(us, step), this.x(us), bottom + 14, 'center');
    }
    this.rect('line', GUTTER, bottom, this.inner, 1);
  }
  // A panel's name and its scale; returns the pixels of a unit.
  scale(name, unit, bars, top, height) {
    const most = bars.reduce((value, bar) => Math.max(value, bar.high), 1), step = decimalStep(most / 3);
    this.text(name, GUTTER, top - 5, 'left', 'text');
    for (let tick = 0; tick <= most; tick += step) {
      const y = Math.round(top + height - tick / most * height);
      this.rect(tick ? 'grid' : 'line', GUTTER, y, this.inner, 1);
      this.text(unit(tick), GUTTER - 5, y + 4, 'right');
    }
    return height / most;
  }
  // Values over [starts[i], end(i)), merged where several share a pixel.
  columns(starts, low, high, keys, end) {
    const found = [], last = lowerBound(starts, this.view[1]);
    for (let i = Math.max(0, lowerBound(starts, this.view[0]) - 1); i < last; i++) {
      const left = Math.floor(this.within(starts[i])), right = Math.max(this.within(end(i)), left + 1);
      const bar = { left, right: right - left > 4 ? right - 1 : right, low: low[i], high: high[i], key: keys && keys[i] > 0 };
      const before = found[found.length - 1];
      if (!before || before.left !== left) found.push(bar);
      else Object.assign(before, { low: Math.min(before.low, bar.low), high: Math.max(before.high, bar.high),
        right: Math.max(before.right, bar.right), key: before.key || bar.key });
    }
    return found;
  }
  track(track, y) {
    const next = i => track.times[i + 1] ?? track.end;
    const bars = this.columns(track.times, track.mean, track.max, track.keys,
        i => track.perBin === 1 && track.step ? Math.min(track.times[i] + track.step, next(i)) : next(i));
    // Marks everywhere would hide what they mark.
    const marked = bars.filter(bar => bar.key).length <= bars.length / 3 || bars.length < 40;
    let top = y + HEAD, unit = this.scale(`track ${track.index}, ${track.name}: sample size`, bytes, bars, top, BARS);
    for (const { left, right, low, high, key } of bars) {
      const [light, dark] = key && marked ? ['key', 'key'] : ['range', 'bar'];
      this.rect(light, left, top + BARS - high * unit, right - left, high * unit);
      this.rect(dark, left, top + BARS - low * unit, right - left, low * unit);
    }
    top += BARS + HEAD;
    const rates = this.columns(track.starts, track.bits, track.bits, null,
        i => Math.min(track.starts[i] + track.rateStep, this.data.to));
    unit = this.scale(`bitrate over ${track.rateStep / 1e6} s`, bits, rates, top, RATES);
    rates.forEach(({ left, right, high }) =>
      this.rect('rate', left, top + RATES - high * unit, right - left, Math.max(high * unit, 1)));
    top += RATES + GAP / 2;
    this.ranges([[track.times[0], track.end]], 'range', top + 4, 6);
    this.ranges(track.overlaps, 'key', top + 4, 6);
    this.ranges(track.gaps, 'bad', top + 2, 10);
    this.text(track.gaps.length ? 'gaps' : 'times', GUTTER - 5, top + 11, 'right');
    return top + MARKS + GAP * 1.5;
  }
  ranges(ranges, color, y, height) {
    for (const [from, to] of ranges) {
      if (to < this.view[0] || from > this.view[1]) continue;
      this.rect(color, this.within(from), y, Math.max(this.within(to) - this.within(from), 1.5), height);
    }
  }
  // A row for each seek: a ring where it was asked to, a dot where each track landed, a diamond at
  // the target that it named.
  seeks(y) {
    const mark = (us, at, color, shape) => {
      if (us < this.view[0] || us > this.view[1]) return;
      const x = this.x(us), pen = this.pen;
      pen.beginPath();
      if (shape === 'diamond') for (const [dx, dy] of [[-4, 0], [0, -4], [4, 0], [0, 4]]) pen.lineTo(x + dx, at + dy);
      else pen.arc(x, at, shape === 'dot' ? 3 : 4, 0, 7);
      pen.fillStyle = pen.strokeStyle = this.color(color);
      if (shape === 'ring') pen.stroke();
      else pen.fill();
    };
    this.text('seeks: ring asked, dot landed, diamond target', GUTTER, y + 12, 'left', 'text');
    this.data.seeks.slice(0, MAX_SEEKS).forEach((seek, i) => {
      const at = y + HEAD + MARKS * (i + 0.5), landed = seek.tracks.filter(track => track.landed !== undefined);
      this.text(clock(seek.asked, 1e4), GUTTER - 5, at + 4, 'right');
      for (const track of landed) {
        const [left, right] = [track.landed, seek.asked].map(us => this.within(us)).sort((a, b) => a - b);
        this.rect('bar', left, at - 0.5, right - left, 1);
        mark(track.landed, at, 'bar', 'dot');
        if (track.target !== undefined) mark(track.target, at, 'key', 'diamond');
      }
      mark(seek.asked, at, 'text', 'ring');
      if (!landed.length) this.text('no sample', Math.min(this.within(seek.asked) + 8, GUTTER + this.inner - 50), at + 4, 'left', 'bad');
    });
  }
}

// ---- the page

const plots = [];
for (const figure of document.querySelectorAll('figure.plot')) {
  const details = figure.closest('details');
  const unfolded = () => details.open && !figure.querySelector('canvas') && plots.push(new Plot(figure));
  details.addEventListener('toggle', unfolded);
  unfolded();
}
matchMedia('(prefers-color-scheme: dark)').addEventListener('change', () => plots.forEach(plot => plot.draw()));

const filters = [...document.querySelectorAll('[data-filter]')];
for (const filter of filters) {
  filter.addEventListener('click', () => {
    filter.ariaPressed = filter.ariaPressed === 'false';
    const wanted = filters.filter(one => one.ariaPressed === 'true').map(one => one.dataset.filter);
    for (const part of document.querySelectorAll('[data-result]')) part.hidden = wanted.length > 0 && !wanted.includes(part.dataset.result);
  });
}

const unfold = () => document.getElementById(location.hash.slice(1))?.setAttribute('open', '');
addEventListener('hashchange', unfold);
unfold();
