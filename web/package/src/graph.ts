/** The course of a game as a picture: an SVG of the evaluations with the moments that decided it. */
import { chances, evalText, type Annotation } from './annotate.js';
import type { Game } from './pgn.js';

const Width = 960;
const Height = 300;
const Margin = { top: 44, right: 16, bottom: 34, left: 44 };

const MarkOf = { inaccuracy: '?!', mistake: '?', blunder: '??' } as const;
const ColourOf = { inaccuracy: '#b8860b', mistake: '#c45a00', blunder: '#b00020' } as const;

function escape(text: string): string {
    return text.replace(/[&<>"]/g, (letter) => ({ '&': '&amp;', '<': '&lt;', '>': '&gt;', '"': '&quot;' })[letter]!);
}

function titleOf(game: Game): string {
    const tag = (name: string): string => game.tags.get(name) ?? '?';
    const date = game.tags.get('Date');
    return `${tag('White')} - ${tag('Black')}  ${game.result}` +
        (date === undefined || date.startsWith('?') ? '' : `  (${date})`);
}

/** A picture of 960 by 300 that stands alone. The height is White's chances; the scale names pawns. */
export function gameGraph(game: Game, { evaluations, moments }: Annotation): string {
    const count = Math.max(1, evaluations.length - 1);
    const x = (index: number): number => Margin.left + ((Width - Margin.left - Margin.right) * index) / count;
    const y = (pawns: number): number => Margin.top + (Height - Margin.top - Margin.bottom) * (1 - chances(pawns));
    const points = evaluations.map((each, index) => `${x(index).toFixed(1)},${y(each.pawns).toFixed(1)}`);
    const out: string[] = [];
    const bottom = Height - Margin.bottom;
    out.push(`<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 ${Width} ${Height}" width="${Width}" height="${Height}" ` +
        'font-family="sans-serif" font-size="12" role="img">');
    out.push(`<title>${escape(titleOf(game))}</title>`);
    out.push(`<rect width="${Width}" height="${Height}" fill="#ffffff"/>`);
    out.push(`<rect x="${Margin.left}" y="${Margin.top}" width="${Width - Margin.left - Margin.right}" height="${bottom - Margin.top}" fill="#50545c"/>`);
    out.push(`<text x="${Margin.left}" y="22" font-size="16" font-weight="bold" fill="#16181d">${escape(titleOf(game))}</text>`);
    if (points.length > 1) {
        out.push(`<polygon fill="#f1eee6" points="${x(0)},${bottom} ${points.join(' ')} ${x(count).toFixed(1)},${bottom}"/>`);
    }
    for (const pawns of [4, 2, 1, 0, -1, -2, -4]) {
        const level = y(pawns).toFixed(1);
        out.push(`<line x1="${Margin.left}" x2="${Width - Margin.right}" y1="${level}" y2="${level}" stroke="#8a8f98" ` +
            `stroke-width="${pawns === 0 ? 1.5 : 0.5}"/>`);
        out.push(`<text x="${Margin.left - 6}" y="${level}" dy="4" text-anchor="end" fill="#333840">${pawns > 0 ? '+' : ''}${pawns}</text>`);
    }
    const first = game.start.moveNumber;
    const moves = Math.ceil(count / 2);
    const step = [1, 2, 5, 10, 20, 50, 100].find((each) => moves / each <= 16) ?? 200;
    const offset = game.start.turn === 'w' ? 0 : 1;
    for (let index = 0; index < count; ++index) {
        const number = first + Math.floor((index + offset) / 2);
        if ((index + offset) % 2 === 0 && (number % step === 0 || number === first)) {
            out.push(`<text x="${x(index + 1).toFixed(1)}" y="${bottom + 18}" text-anchor="middle" fill="#333840">${number}</text>`);
        }
    }
    if (points.length > 1) {
        out.push(`<polyline fill="none" stroke="#1463b8" stroke-width="1.5" points="${points.join(' ')}"/>`);
    }
    for (const moment of moments) {
        const ply = game.plies[moment.ply]!;
        const number = `${ply.before.moveNumber}${ply.before.turn === 'w' ? '.' : '...'}`;
        const evaluation = evaluations[moment.ply + 1]!;
        const height = y(evaluation.pawns);
        out.push(`<g><title>${escape(`${number} ${ply.move.san}${MarkOf[moment.kind]} (${moment.kind}): ${evalText(evaluations[moment.ply]!)} to ${evalText(evaluation)}`)}</title>` +
            `<circle cx="${x(moment.ply + 1).toFixed(1)}" cy="${height.toFixed(1)}" r="4.5" fill="${ColourOf[moment.kind]}" stroke="#ffffff"/></g>`);
    }
    // Names of the worst few; more would cover one another.
    const worst = [...moments].sort((left, right) => right.loss - left.loss).slice(0, 5)
        .sort((left, right) => left.ply - right.ply);
    let lastEnd = -Infinity;
    for (const moment of worst) {
        const ply = game.plies[moment.ply]!;
        const label = `${ply.before.moveNumber}${ply.before.turn === 'w' ? '.' : '...'}${ply.move.san}${MarkOf[moment.kind]}`;
        const width = label.length * 7;
        const left = Math.max(Margin.left, Math.min(x(moment.ply + 1) - width / 2, Width - Margin.right - width));
        if (left > lastEnd + 6) {
            out.push(`<text x="${left.toFixed(1)}" y="${Margin.top - 6}" fill="${ColourOf[moment.kind]}">${escape(label)}</text>`);
            lastEnd = left + width;
        }
    }
    out.push('</svg>');
    return `${out.join('\n')}\n`;
}
