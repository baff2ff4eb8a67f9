import { startApp } from './app/startApp.ts';
import { FORMAT, type ReportData } from './data/contract.ts';
import { byId, element } from './base/dom.ts';

function readData(): ReportData {
  const holder = byId('trunnion-data');
  const report = JSON.parse(holder.textContent ?? '') as ReportData;
  holder.remove(); // a long run's text need not stay in memory
  if (report.format !== FORMAT) {
    throw new Error(`the data have format ${report.format}, this page reads ${FORMAT}`);
  }
  return report;
}

async function main(): Promise<void> {
  try {
    await startApp(readData());
  } catch (error) {
    const reason = error instanceof Error ? error.message : String(error);
    byId('content').prepend(
      element('p', { class: 'notice', role: 'alert' }, `This report cannot be shown: ${reason}`),
    );
    throw error;
  }
}

void main();
