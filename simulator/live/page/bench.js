'use strict';
// The live bench: shows what the server tells of the run, and sends back what is done by hand.

const $ = id => document.getElementById(id);
const token = new URLSearchParams(location.search).get('token') ?? '';
const kLatest = 1200;                 // readings kept
const kStrip = 120;                   // seconds of board time on the strip of counts
const kConsole = 16384;               // characters
const kHome = 277.5;                  // degrees at which the middle of the flag stands in the sensor

let state = null;
let shown = {readings: [], results: [], console: '', log: '', done: []};
let lost = '', error = '';
let turned = 0;                       // of the drawn shaft, which never turns back

// ---- the run, as it is told

const stream = new EventSource(`events?token=${encodeURIComponent(token)}`);
const on = (name, act) => stream.addEventListener(name, event => {
  act(JSON.parse(event.data));
  draw();
});
on('all', all => {
  $('done').replaceChildren();
  shown = {readings: all.readings, results: all.results, console: all.console, log: all.log, done: all.done ?? []};
  state = all;
  lost = '';
  if (document.activeElement !== $('noise-value')) $('noise-value').value = all.noise;
});
on('state', news => { state = news; });
on('reading', news => { shown.readings = shown.readings.concat(news).slice(-kLatest); });
on('result', news => { shown.results = [...shown.results, news].slice(-kLatest); });
on('console', news => { shown.console = (shown.console + news).slice(-kConsole); });
on('log', tail => { shown.log = tail; });
on('done', news => { shown.done = [...shown.done, news]; });
on('end', news => { if (state) state.ended = news.reason; });
stream.onerror = () => {
  lost = stream.readyState === EventSource.CLOSED ? 'the bench refuses this page: open the address that it printed, or close another page'
    : 'connection lost: trying again';
  draw();
};

let closed = null;                    // whether nothing can be done
let drawing = false;
/** Soon: at pace max, which no eye follows, four times a second, and the rest of the machine is the run's. */
function draw() {
  if (drawing) return;
  drawing = true;
  const racing = state && state.pace === 0 && !state.paused && !state.ended && !lost;
  setTimeout(() => requestAnimationFrame(() => {
    drawing = false;
    drawRun();
    if (!state) return;
    drawFigures();
    drawInstrument();
    drawSteps();
    drawCharts();
    drawTexts();
  }), racing ? 250 : 0);
}

// ---- texts

const grouped = number => String(number).replace(/\B(?=(\d{3})+$)/g, '\u202f');
const fixed = number => number === null ? 'not a number' : number.toFixed(3);
const seconds = time => `${time.toFixed(3)} s`;
const minutes = time => `${Math.floor(time / 60)}:${String(Math.floor(time % 60)).padStart(2, '0')}`;

function tell(id, text) {
  const element = $(id);
  if (element.textContent !== text) element.textContent = text;
}
const label = (id, text) => { $(id).querySelector('span').textContent = text; };

/** Gives an element's data attributes, which the style sheet draws by. */
function mark(id, values) {
  for (const [name, value] of Object.entries(values)) $(id).dataset[name] = value;
}

function drawRun() {
  const kind = lost ? 'lost' : !state ? '' : state.ended ? 'ended' : state.paused ? 'paused' : 'running';
  document.body.classList.toggle('lost', Boolean(lost));
  $('board').classList.toggle('still', kind !== 'running');
  mark('status', {kind});
  tell('status', kind || 'connecting');
  const message = lost || error || state?.ended || '';
  tell('message', message);
  $('message').title = message;
  $('message').classList.toggle('trouble', Boolean(lost || error));
  label('run', state?.paused ? 'Run' : 'Pause');
  const off = kind === 'lost' || kind === 'ended' || kind === '';
  if (off !== closed) {
    closed = off;
    for (const control of document.querySelectorAll('button, input, select')) control.disabled = off;
    if (!off) limitFault();
  }
  $('save').disabled = kind === 'lost' || kind === '';
}

function drawFigures() {
  tell('clock', state.clock);
  tell('time', seconds(state.time));
  tell('measurements', String(state.measurements));
  tell('chlorine', state.measurements ? fixed(state.chlorine) : '-');
  for (const choice of document.querySelectorAll('[name=pace]')) choice.checked = Number(choice.value) === state.pace;
}

// ---- the instrument

function drawInstrument() {
  const {lamp, valve, stirrer, pump, cell, converter, card} = state;
  const turning = pump.enabled && pump.frequency > 0;
  const lit = lamp.duty > 0;
  mark('valve', {open: valve.open});
  tell('valve-text', valve.open ? 'valve open' : 'valve closed');
  mark('stirrer', {on: stirrer.on});
  tell('stirrer-text', stirrer.on ? `${Math.round(stirrer.frequency)} Hz` : 'at rest');
  mark('lamp', {on: lit});
  tell('lamp-text', lit ? `${Number(lamp.duty.toFixed(1))} %` : 'off');

  turned += (((pump.angle - kHome + 90 - turned) % 360) + 360) % 360;
  $('shaft').style.transform = `rotate(${turned}deg)`;
  mark('pump', {turning, flag: pump.flag, blocked: pump.blocked, angle: pump.angle});
  tell('pump-text', turning ? `${Math.round(pump.frequency)} Hz` : 'at rest');
  tell('flag-text', pump.blocked ? 'blocked' : pump.flag ? 'flag' : 'free');

  const through = Math.min(1, 10 ** -cell.absorbance);
  mark('cell', {absorbance: cell.absorbance});
  tell('absorbance', fixed(cell.absorbance));
  tell('sample-text', fixed(cell.sample));
  tell('next-text', fixed(cell.next));
  $('liquid').style.fill = `color-mix(in srgb, rgb(var(--dye)) ${(100 * (1 - through)).toFixed(1)}%, var(--water))`;
  $('board').classList.toggle('lit', lit);
  $('ray-end').style.stopOpacity = through;
  document.querySelector('.after').style.opacity = 0.75 * through;
  document.querySelector('.eye').style.fillOpacity = lit ? through : 1;

  mark('detector', {reading: converter.reading});
  tell('reading', converter.count ? grouped(converter.reading) : '-');
  tell('count', `${grouped(converter.count)} readings`);

  mark('card', {present: card.present, mounted: card.mounted, locked: card.locked});
  tell('card-text', (card.present ? card.mounted ? 'mounted' : 'not mounted' : card.mounted ? 'pulled while mounted' : 'pulled')
    + (card.locked ? ', locked' : ''));
  tell('card-file', card.file);
  tell('card-bytes', card.file ? `${grouped(card.bytes)} bytes` : '');
  tell('log-name', card.file);
  label('card-button', card.present ? 'Pull card' : 'Insert card');
  label('lock-button', card.locked ? 'Unlock card' : 'Lock card');
  label('flag-button', pump.blocked ? 'Free flag' : 'Block flag');

  mark('indicator', {colour: state.indicator});
  tell('indicator-text', state.indicator);
  $('indicator-lamp').style.fill = state.indicator === 'off' ? '' : state.indicator;
}

function drawSteps() {
  for (const [index, row] of [...$('steps').rows].entries()) {
    if (index + 1 === state.step) row.setAttribute('aria-current', 'step');
    else row.removeAttribute('aria-current');
  }
}

fetch('steps.json').then(answer => answer.json()).then(steps => {
  for (const [index, step] of steps.entries()) {
    const row = $('steps').insertRow();
    const texts = [index + 1, step.description, step.duration, ...[step.light, step.valve, step.stirrer, step.angle > 0].map(
      on => on ? '\u25cf' : '')];
    for (const text of texts) row.insertCell().textContent = text;
    row.cells[2].className = 'end';
  }
  draw();
});

// ---- charts

function make(parent, name, attributes, text = '') {
  const element = document.createElementNS('http://www.w3.org/2000/svg', name);
  for (const [key, value] of Object.entries(attributes)) element.setAttribute(key, value);
  element.textContent = text;
  parent.append(element);
}

/** A step between grid lines: 1, 2 or 5 times a power of ten. */
function gridStep(span, lines) {
  const power = 10 ** Math.floor(Math.log10(span / lines));
  return [1, 2, 5, 10].map(factor => factor * power).find(step => span / step <= lines);
}

function chart(id, all, from, to, {top, dots, text}) {
  const points = all.filter(point => point[0] >= from && Number.isFinite(point[1]));
  const svg = $(id), left = 46, above = 6, width = svg.clientWidth - left - 8, height = svg.clientHeight - above - 16;
  svg.dataset.points = points.length;
  svg.setAttribute('aria-label', points.length ? `latest ${points.at(-1)[1]}` : 'nothing yet');
  svg.replaceChildren();
  const values = points.map(point => point[1]), low = Math.min(0, ...values), high = Math.max(top, ...values);
  const step = gridStep(high - low, 4), bottom = Math.floor(low / step + 0.1) * step, ceiling = Math.ceil(high / step - 0.1) * step;
  const x = time => left + (time - from) / (to - from) * width;
  const y = value => above + (ceiling - value) / (ceiling - bottom) * height;
  for (let value = bottom; value <= ceiling + step / 2; value += step) {
    make(svg, 'line', {class: 'grid', x1: left, x2: left + width, y1: y(value), y2: y(value)});
    make(svg, 'text', {x: left - 5, y: y(value) + 3.5, 'text-anchor': 'end'}, text(value));
  }
  const tick = [10, 20, 30, 60, 120, 300, 600].find(span => (to - from) / span <= 7) ?? gridStep(to - from, 7);
  for (let time = Math.ceil(from / tick) * tick; time <= to; time += tick)
    make(svg, 'text', {x: x(time), y: above + height + 13, 'text-anchor': time === 0 ? 'start' : x(time) > left + width - 10 ? 'end' : 'middle'},
      minutes(time));
  if (!points.length) make(svg, 'text', {x: left + width / 2, y: above + height / 2 + 4, 'text-anchor': 'middle'}, 'nothing yet');
  else make(svg, 'path', {d: 'M' + points.map(point => `${x(point[0]).toFixed(1)} ${y(point[1]).toFixed(1)}`).join('L')});
  if (dots) for (const [time, value] of points) make(svg, 'circle', {cx: x(time), cy: y(value), r: 3});
}

function drawCharts() {
  const now = Math.max(state.time, kStrip);
  chart('counts', shown.readings, now - kStrip, now, {
    top: 1000, text: value => Math.abs(value) >= 1e5 ? `${Number((value / 1e6).toFixed(2))} M` : grouped(Math.round(value))});
  const first = shown.results.length > 1 ? Math.min(shown.results[0][0], now - kStrip) : now - kStrip;
  chart('results', shown.results, first, now, {top: 100, dots: shown.results.length < 80, text: value => grouped(Math.round(value))});
}
new ResizeObserver(draw).observe($('counts'));

// ---- console, card's file, what was done

function drawTexts() {
  for (const name of ['console', 'log']) {
    const element = $(name), atEnd = element.scrollHeight - element.scrollTop - element.clientHeight < 24;
    tell(name, shown[name]);
    if (atEnd) element.scrollTop = element.scrollHeight;
  }
  const list = $('done');
  while (list.childElementCount < shown.done.length) {
    const item = document.createElement('li');
    item.append(document.createElement('time'), document.createElement('span'));
    list.prepend(item);
  }
  for (const [index, [time, command]] of shown.done.toReversed().entries()) {
    const [at, what] = list.children[index].children;
    at.textContent = seconds(time);
    what.textContent = described(command) + struck(time, command);
  }
}

function struck(time, command) {
  const fault = command.do === 'fault' && state.faults.find(one => Math.abs(one.at - time) < 0.0005 && one.call === command.call);
  return fault ? fault.struck ? `: struck, ${fault.struck} ${fault.struck > 1 ? 'times' : 'time'}` : ': waiting' : '';
}

const kCardWords = {remove: 'card pulled', insert: 'card inserted', lock: 'card locked', unlock: 'card unlocked'};
function described(command) {
  switch (command.do) {
  case 'absorbance': return `next sample's absorbance ${command.value}`;
  case 'noise': return `noise ${command.value} counts`;
  case 'card': return kCardWords[command.value];
  case 'flag': return command.value === 'blocked' ? 'flag blocked' : 'flag free';
  case 'fault': return `${command.call} ${command.path ?? ''} ${command.errno ?? `moves ${command.bytes} bytes`}`
    + (command.repeat === 'forever' ? ', all later ones too' : '');
  default: return JSON.stringify(command);
  }
}

// ---- what can be done

async function act(command) {
  try {
    const answer = await fetch('do', {method: 'POST', headers: {'Content-Type': 'application/json', 'X-Token': token},
      body: JSON.stringify(command)});
    const told = await answer.json().catch(() => ({}));
    error = answer.ok ? '' : told.error ?? `refused: ${answer.status}`;
  } catch {
    error = 'the bench does not answer';
  }
  draw();
}
const click = (id, command) => $(id).addEventListener('click', () => act(command()));
const submit = (id, command) => $(id).addEventListener('submit', event => {
  event.preventDefault();
  act(command());
});

click('run', () => ({do: state.paused ? 'run' : 'pause'}));
click('step', () => ({do: 'step'}));
click('measurement', () => ({do: 'measurement'}));
click('card-button', () => ({do: 'card', value: state.card.present ? 'remove' : 'insert'}));
click('lock-button', () => ({do: 'card', value: state.card.locked ? 'unlock' : 'lock'}));
click('flag-button', () => ({do: 'flag', value: state.pump.blocked ? 'free' : 'blocked'}));
$('pace').addEventListener('change', event => act({do: 'pace', value: Number(event.target.value)}));
submit('absorbance-form', () => ({do: 'absorbance', value: Number($('absorbance-value').value)}));
submit('noise-form', () => ({do: 'noise', value: Number($('noise-value').value)}));
submit('fault-form', () => ({
  do: 'fault', call: $('call').value,
  ...!$('path').disabled && $('path').value ? {path: $('path').value} : {},
  ...$('bytes-value').disabled ? {errno: $('error').value} : {bytes: Number($('bytes-value').value)},
  ...$('forever').checked ? {repeat: 'forever'} : {},
}));
$('save').addEventListener('click', () => {
  const link = document.createElement('a');
  link.href = `scenario?token=${encodeURIComponent(token)}`;
  link.download = 'bench.toml';
  link.click();
});

// ---- the fault's fields

const kOnPath = ['open', 'read', 'write', 'close', 'lseek', 'ioctl', 'poll', 'access', 'stat', 'lstat', 'statfs', 'mkdir', 'mount', 'umount',
  'mmap', 'setmntent'];
const kPathless = ['clock_gettime', 'nanosleep', 'pthread_create', 'pthread_join', 'pthread_mutex_init', 'pthread_mutex_lock',
  'pthread_mutex_unlock', 'fork', 'kill', 'system'];
const kErrors = ['EIO', 'EACCES', 'EAGAIN', 'EBADF', 'EBUSY', 'ECHILD', 'EDEADLK', 'EEXIST', 'EFBIG', 'EINTR', 'EINVAL', 'EISDIR', 'EMFILE',
  'EMSGSIZE', 'ENAMETOOLONG', 'ENFILE', 'ENODEV', 'ENOENT', 'ENOMEM', 'ENOSPC', 'ENOSYS', 'ENOTDIR', 'ENOTTY', 'ENXIO', 'EPERM', 'EPIPE',
  'ERANGE', 'EROFS', 'ESRCH', 'ETIMEDOUT'];
const kPaths = ['/sys/class/gpio/export', '/sys/class/gpio/pioA2/value', '/sys/class/gpio/pioB15/value', '/sys/class/gpio/pioB18/value',
  '/sys/class/pwm/pwmchip0/pwm0/enable', '/sys/class/pwm/pwmchip0/pwm1/*', '/sys/class/pwm/pwmchip0/pwm2/enable',
  '/sys/class/pwm/pwmchip0/pwm3/enable', '/dev/spidev32765.1', '/dev/mmcblk0p1', '/mnt/sd-card', '/mnt/sd-card/*', '/etc/mtab'];
$('call').append(...[...kOnPath, ...kPathless].map(name => new Option(name, name)));
$('error').append(...kErrors.map(name => new Option(name, name)));
$('paths').append(...kPaths.map(path => new Option('', path)));

/** A path only where the call has one, a number of bytes only for a read or a write. */
function limitFault() {
  const moves = ['read', 'write'].includes($('call').value);
  $('path').disabled = kPathless.includes($('call').value);
  $('bytes').disabled = !moves;
  $('bytes-value').disabled = !(moves && $('bytes').checked);
  $('error').disabled = !$('bytes-value').disabled;
}
for (const id of ['call', 'bytes']) $(id).addEventListener('change', limitFault);

// ---- keys

const kKeys = new Map([...document.querySelectorAll('[data-key]')].map(control => [control.dataset.key, control]));
document.addEventListener('keydown', event => {
  const typing = event.target.matches('input:not([type=checkbox]):not([type=radio]), select');
  if (event.key === 'Escape' && typing) event.target.blur();
  const control = kKeys.get(event.key.toLowerCase());
  if (!control || typing || event.ctrlKey || event.altKey || event.metaKey || event.repeat) return;
  if (event.key === ' ' && event.target.matches('button, input')) return;
  event.preventDefault();
  if (control.matches('button, [type=radio]')) control.click();
  else control.focus();
});

draw();
