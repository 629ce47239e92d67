'use strict';
// The search page. Every value that comes from mail goes in through textContent: a message is
// data, never markup, whatever its subject or body holds.

const token = new URLSearchParams(location.search).get('token') || '';
const pageSize = 20;
const $ = (id) => document.getElementById(id);

function element(tag, className, text) {
  const node = document.createElement(tag);
  if (className) node.className = className;
  if (text !== undefined && text !== null) node.textContent = String(text);
  return node;
}

function apiUrl(path, params) {
  const url = new URL(path, location.origin);
  for (const [key, value] of Object.entries(params || {}))
    if (value !== '' && value !== undefined && value !== null) url.searchParams.set(key, value);
  url.searchParams.set('token', token);
  return url;
}

async function api(path, params, options) {
  const response = await fetch(apiUrl(path, params), options);
  const body = await response.json().catch(() => ({}));
  if (!response.ok) throw new Error(body.error || `${response.status} ${response.statusText}`);
  return body;
}

// The hash holds what a person would want Back to return to: the query, its order, page and
// filters, and the message open, if any.
function readHash() {
  const hash = new URLSearchParams(location.hash.slice(1));
  return {
    q: hash.get('q') || '',
    sort: hash.get('sort') || 'newest',
    page: Math.max(0, parseInt(hash.get('page') || '0', 10) || 0),
    store: hash.get('store') || '',
    year: hash.get('year') || '',
    message: hash.get('message') || '',
  };
}

function hashOf(state) {
  const hash = new URLSearchParams();
  for (const key of ['q', 'sort', 'page', 'store', 'year', 'message'])
    if (state[key] !== '' && state[key] !== 0 && !(key === 'sort' && state[key] === 'newest'))
      hash.set(key, state[key]);
  return '#' + hash.toString();
}

function go(changes) {
  location.hash = hashOf(Object.assign(readHash(), { message: '' }, changes));
}

// ---- The list of hits

let lastSearch = '';
let hitLinks = [];
let selected = -1;

function formatDate(hit) {
  if (!hit.date) return 'no date';
  const date = new Date(hit.date);
  if (isNaN(date)) return hit.date;
  return date.toLocaleDateString(undefined, { year: 'numeric', month: 'short', day: 'numeric' });
}

function renderHit(hit, state) {
  const link = element('a', 'hit');
  link.href = hashOf(Object.assign({}, state, { message: hit.id }));
  const top = element('div', 'hit-top');
  top.append(element('span', 'hit-from', hit.from || '(no sender)'),
    element('time', 'hit-date', formatDate(hit)));
  const snippet = element('p', 'hit-snippet');
  for (const part of hit.snippet || [])
    snippet.append(part.hit ? element('mark', '', part.text) : document.createTextNode(part.text));
  link.append(top, element('div', 'hit-subject', hit.subject || '(no subject)'),
    element('div', 'hit-place', `${hit.store} · ${hit.folder}`), snippet);
  const item = element('li');
  item.append(link);
  return item;
}

function renderFacet(listId, facets, key, state) {
  const list = $(listId);
  list.replaceChildren();
  for (const facet of facets || []) {
    const active = state[key] === facet.name;
    const button = element('button', 'facet');
    button.type = 'button';
    button.setAttribute('aria-pressed', String(active));
    button.append(element('span', '', facet.name), element('span', 'count', facet.count));
    button.addEventListener('click', () => go({ [key]: active ? '' : facet.name, page: 0 }));
    const item = element('li');
    item.append(button);
    list.append(item);
  }
}

function select(index) {
  if (!hitLinks.length) return;
  selected = Math.max(0, Math.min(hitLinks.length - 1, index));
  hitLinks.forEach((link, i) => link.classList.toggle('selected', i === selected));
  hitLinks[selected].focus();
}

async function search(state) {
  const key = JSON.stringify([state.q, state.sort, state.page, state.store, state.year]);
  if (key === lastSearch) return;
  lastSearch = key;
  const summary = $('summary');
  summary.classList.remove('error');
  summary.textContent = 'Searching…';
  let result;
  try {
    result = await api('/api/search', {
      q: state.q, sort: state.sort, offset: state.page * pageSize, limit: pageSize,
      store: state.store, year: state.year,
    });
  } catch (error) {
    lastSearch = '';
    summary.classList.add('error');
    summary.textContent = error.message;
    $('hits').replaceChildren();
    return;
  }
  if (key !== lastSearch) return; // a newer search has started meanwhile
  $('hits').replaceChildren(...result.hits.map((hit) => renderHit(hit, state)));
  hitLinks = Array.from(document.querySelectorAll('#hits a.hit'));
  selected = -1;
  renderFacet('facet-stores', result.facets && result.facets.stores, 'store', state);
  renderFacet('facet-years', result.facets && result.facets.years, 'year', state);
  const first = result.total ? result.offset + 1 : 0;
  const last = result.offset + result.hits.length;
  summary.textContent = result.total === 1 ? '1 hit' : `${result.total || 'No'} hits`;
  $('page-label').textContent = result.total ? `${first}–${last} of ${result.total}` : '';
  $('prev').disabled = state.page === 0;
  $('next').disabled = last >= result.total;
}

// ---- One message

function formatSize(bytes) {
  if (bytes < 1024) return `${bytes} bytes`;
  if (bytes < 1024 * 1024) return `${(bytes / 1024).toFixed(1)} KB`;
  return `${(bytes / 1024 / 1024).toFixed(1)} MB`;
}

async function showMessage(id) {
  const fields = ['m-subject', 'm-place', 'm-text'];
  fields.forEach((field) => ($(field).textContent = ''));
  $('m-headers').replaceChildren();
  $('m-attachments').replaceChildren();
  $('m-attachments-title').hidden = true;
  let message;
  try {
    message = await api('/api/message/' + encodeURIComponent(id));
  } catch (error) {
    $('m-subject').textContent = error.message;
    return;
  }
  const headers = message.headers || {};
  $('m-subject').textContent = headers.subject || '(no subject)';
  document.title = `${headers.subject || '(no subject)'} – Mail search`;
  for (const [name, label] of [['from', 'From'], ['to', 'To'], ['cc', 'Cc'], ['date', 'Date']]) {
    if (!headers[name]) continue;
    $('m-headers').append(element('dt', '', label), element('dd', '', headers[name]));
  }
  $('m-place').textContent = `${message.store} · ${message.folder}`;
  $('m-text').textContent = message.text || '';
  const attachments = message.attachments || [];
  $('m-attachments-title').hidden = attachments.length === 0;
  $('m-attachments').replaceChildren(...attachments.map((attachment) =>
    element('li', '', `${attachment.name} (${attachment.type}, ${formatSize(attachment.size)})`)));
  $('back').focus();
}

// ---- Which view the hash asks for

let openedFromList = false;
let openedIndex = -1;

function route() {
  const state = readHash();
  const inMessage = state.message !== '';
  $('results-view').hidden = inMessage;
  $('message-view').hidden = !inMessage;
  if (document.activeElement !== $('q')) $('q').value = state.q;
  $('sort').value = state.sort;
  if (inMessage) {
    showMessage(state.message);
    return;
  }
  document.title = state.q ? `${state.q} – Mail search` : 'Mail search';
  const again = lastSearch;
  const reopened = openedFromList ? openedIndex : -1;
  openedFromList = false;
  search(state).then(() => {
    // Back from a message finds the list as it was, with the hit it opened selected.
    if (again === lastSearch && reopened >= 0) select(reopened);
  });
}

function back() {
  if (openedFromList) history.back();
  else go({ message: '' });
}

// ---- Indexing, with its progress from the server's event stream

let events = null;

function indexStatus(text, value) {
  $('index-status').textContent = text;
  const bar = $('index-progress');
  bar.hidden = value === undefined;
  if (value === null) bar.removeAttribute('value');
  else if (value !== undefined) bar.value = value;
}

async function indexNow() {
  if (events) return;
  $('index-now').disabled = true;
  let storeCount = 0;
  try {
    storeCount = (await api('/api/stores')).stores.length;
  } catch (error) {
    storeCount = 0;
  }
  const seen = [];
  const finish = (text) => {
    events.close();
    events = null;
    $('index-now').disabled = false;
    indexStatus(text, text.startsWith('Indexed') ? 1 : undefined);
    lastSearch = '';
    route();
  };
  indexStatus('Starting…', null);
  // Listen first, then start: a short run could otherwise end before the stream is open.
  events = new EventSource(apiUrl('/api/index/events'));
  events.addEventListener('open', async () => {
    try {
      await api('/api/index', {}, { method: 'POST', headers: { 'X-Tuk-Token': token } });
    } catch (error) {
      if (!/under way/.test(error.message)) finish(error.message);
    }
  }, { once: true });
  // While a store is read: the share of its mailboxes' bytes walked so far.
  events.addEventListener('reading', (event) => {
    const step = JSON.parse(event.data);
    const part = step.totalBytes ? Math.min(1, step.bytes / step.totalBytes) : 0;
    const share = storeCount ? Math.min(1, (seen.length + part) / storeCount) : null;
    indexStatus(`${step.store}: ${Math.round(part * 100)}% read, ${step.new} new`, share);
  });
  events.addEventListener('progress', (event) => {
    const step = JSON.parse(event.data);
    if (!seen.includes(step.store)) seen.push(step.store);
    const share = storeCount ? Math.min(1, (seen.length - 0.5) / storeCount) : null;
    indexStatus(`${step.store}: ${step.mailboxes} mailboxes, ${step.messages} messages, ` +
      `${step.new} new`, share);
  });
  events.addEventListener('done', (event) => {
    const done = JSON.parse(event.data);
    finish(`Indexed ${done.stores} stores: ${done.new} new of ${done.messages} messages ` +
      `in ${Number(done.seconds).toFixed(1)} s`);
  });
  events.addEventListener('error', (event) => {
    let text = 'The connection to the server was lost';
    if (event.data) text = JSON.parse(event.data).error;
    finish(text);
  });
}

// ---- Keys and controls

function onKey(event) {
  if (event.ctrlKey || event.metaKey || event.altKey) return;
  const typing = event.target.matches('input, select, textarea');
  const inMessage = !$('message-view').hidden;
  if (event.key === 'Escape') {
    if (inMessage) back();
    else if (typing) event.target.blur();
    return;
  }
  if (typing) return;
  if (event.key === '/') {
    event.preventDefault();
    if (inMessage) back();
    $('q').focus();
    $('q').select();
  } else if (!inMessage && (event.key === 'j' || event.key === 'k')) {
    event.preventDefault();
    select(selected + (event.key === 'j' ? 1 : -1));
  } else if (!inMessage && event.key === 'Enter' && selected >= 0 &&
             document.activeElement !== hitLinks[selected]) {
    hitLinks[selected].click();
  }
}

function start() {
  $('search-form').addEventListener('submit', (event) => {
    event.preventDefault();
    // A new query starts without the filters of the last one: its facets may not hold them.
    go({ q: $('q').value.trim(), sort: $('sort').value, page: 0, store: '', year: '' });
  });
  $('sort').addEventListener('change', () => go({ sort: $('sort').value, page: 0 }));
  $('prev').addEventListener('click', () => go({ page: Math.max(0, readHash().page - 1) }));
  $('next').addEventListener('click', () => go({ page: readHash().page + 1 }));
  $('back').addEventListener('click', back);
  $('index-now').addEventListener('click', indexNow);
  $('hits').addEventListener('click', (event) => {
    const link = event.target.closest('a.hit');
    if (!link) return;
    openedFromList = true;
    openedIndex = hitLinks.indexOf(link);
  });
  document.addEventListener('keydown', onKey);
  window.addEventListener('hashchange', route);
  route();
  if (!readHash().message) $('q').focus();
}

start();
