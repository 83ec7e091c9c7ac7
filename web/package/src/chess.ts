/** Rules, games and annotation, without an engine of their own: `import ... from 'brenquil/chess'`. */
export * from './annotate.js';
export { checkFen } from './fen.js';
export { gameGraph } from './graph.js';
export * from './pgn.js';
export * from './rules.js';
