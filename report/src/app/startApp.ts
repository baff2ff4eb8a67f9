import { byId } from '../base/dom.ts';
import type { ReportData } from '../data/contract.ts';
import { machineFigures, runFigures } from '../ui/figures.ts';
import { buildHeader, buildSections } from '../ui/skeleton.ts';
import { startMachine } from './machinePage.ts';
import { startRun } from './runPage.ts';

/// Everything that belongs to a loaded report. A run without rows is shown as its machine alone.
export async function startApp(report: ReportData): Promise<void> {
  buildHeader(report);
  const run = report.run !== null && report.run.rows.count > 0 ? report.run : null;
  buildSections({ ...report, run });
  const figures = byId('figures-body');
  figures.append(
    ...(report.run === null ? [] : runFigures(report.machine, report.run)),
    ...machineFigures(report),
  );
  const app = run === null ? startMachine(report) : await startRun(report, run);
  window.trunnion = app;
  document.documentElement.dataset['ready'] = 'yes';
}
