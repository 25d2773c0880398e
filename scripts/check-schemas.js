// check-schemas.js PACKAGING PROFILE MANIFEST: see scripts/check-schemas.
const fs = require('fs');
const Ajv = require('ajv');
const plist = require('plist');

const [packaging, profileFile, manifestFile] = process.argv.slice(2);
const read = file => JSON.parse(fs.readFileSync(file, 'utf8'));
const readList = file => plist.parse(fs.readFileSync(file, 'utf8'));
const domain = 'com.mosk.vorlu.preferences';

let failures = 0;
const check = (holds, what) => {
  console.log(`${holds ? 'ok' : 'FAILED'}: ${what}`);
  if (!holds) failures += 1;
};

// Strict: a keyword that the draft doesn't know would be ignored elsewhere, so only the form's own two are let through.
const ajv = new Ajv({strict: true, strictRequired: false, allErrors: true});
ajv.addVocabulary(['__preferencedomain', 'property_order']);
const compile = name => {
  const schema = read(`${packaging}/${name}`);
  check(ajv.validateSchema(schema), `${name} is a valid schema`);
  return ajv.compile(schema);
};

// A fault: a change of a good document, and where the validator must point to.
const changed = (document, change) => {
  const copy = structuredClone(document);
  change(copy);
  return copy;
};
const refuses = (validate, document, faults) => {
  for (const [what, where, change] of faults) {
    const passed = validate(changed(document, change));
    const found = !passed && validate.errors.some(error => error.instancePath === where);
    check(found, `${what} is refused${passed ? '' : ` at ${where || 'the top'}`}`);
  }
};

const preferences = compile('preferences.schema.json');
const profile = readList(profileFile);
const settings = profile.PayloadContent[0].PayloadContent[domain].Forced[0].mcx_preference_settings;
check(preferences(settings), "the sample profile's settings pass");
check(preferences({}), 'no settings pass');
const scheduled = '/ScheduledUpdates';
refuses(preferences, settings, [
  ['a misspelt key', scheduled, s => { s.ScheduledUpdates.gracePeriodMinute = 10; }],
  ['a key in another section', '/GeneralOptions', s => { s.GeneralOptions.gracePeriodMinutes = 10; }],
  ['an unknown section', '', s => { s.Scheduled = {}; }],
  ['a number as text', `${scheduled}/gracePeriodMinutes`, s => { s.ScheduledUpdates.gracePeriodMinutes = '30'; }],
  ['a boolean as number', '/GeneralOptions/hourlyCheck', s => { s.GeneralOptions.hourlyCheck = 1; }],
  ['a text for a list', '/GeneralOptions/allowedAppUpdates', s => { s.GeneralOptions.allowedAppUpdates = 'slides'; }],
  ['a number in a list', '/GeneralOptions/excludedAppUpdates/0', s => { s.GeneralOptions.excludedAppUpdates = [7]; }],
  ['an unknown choice', `${scheduled}/deferralConfiguration/deferralOption`,
    s => { s.ScheduledUpdates.deferralConfiguration.deferralOption = 'noDeferrals'; }],
  ['a day beyond the week', `${scheduled}/runFrequency/patchDay`, s => { s.ScheduledUpdates.runFrequency.patchDay = 8; }],
  ['a fraction', `${scheduled}/refreshInterval`, s => { s.ScheduledUpdates.refreshInterval = 20.5; }],
  ['an interval too short', '/ForcedUpdates/refreshInterval', s => { s.ForcedUpdates.refreshInterval = 5; }],
  ['a time of one digit', `${scheduled}/runLimitations/mondayStartTime`,
    s => { s.ScheduledUpdates.runLimitations.mondayStartTime = '9:00'; }],
  ['a time past midnight', `${scheduled}/runLimitations/mondayEndTime`,
    s => { s.ScheduledUpdates.runLimitations.mondayEndTime = '24:00'; }],
  ['a start without an end', `${scheduled}/runLimitations`, s => { delete s.ScheduledUpdates.runLimitations.fridayEndTime; }],
  ['a height without a width', `${scheduled}/customGracePromptSize`,
    s => { s.ScheduledUpdates.customGracePromptSize = {promptHeight: 300}; }],
]);

const entries = compile('blueprint.schema.json');
const catalog = read(`${packaging}/sample-catalog.json`);
check(entries(catalog), 'the sample catalog passes');
check(entries([]), 'an empty catalog passes');
refuses(entries, catalog, [
  ['a misspelt key', '/0', c => { c[0].universalDownloadUrl = 'https://downloads.example.com/a.zip'; }],
  ['an entry without identifier', '/1', c => { delete c[1].appIdentifier; }],
  ['an entry without version', '/2', c => { delete c[2].latestVersion; }],
  ['one version of the pair', '/1', c => { delete c[1].latestIntelVersion; }],
  ['a mode as text', '/0/mode', c => { c[0].mode = '755'; }],
  ['a mode out of range', '/0/mode', c => { c[0].mode = 10755; }],
  ['an unknown type of download', '/0/downloadFileType', c => { c[0].downloadFileType = 'rar'; }],
  ['a method in other letter case', '/0/latestVersionMethod', c => { c[0].latestVersionMethod = 'cfbundleversion'; }],
  ['an upper-case hash', '/1/intelInstallerHash', c => { c[1].intelInstallerHash = c[1].intelInstallerHash.toUpperCase(); }],
  ['a short hash', '/1/siliconInstallerHash', c => { c[1].siliconInstallerHash = 'abc'; }],
  ['an address of another scheme', '/0/universalDownloadURL', c => { c[0].universalDownloadURL = 'ftp://example.com/a.zip'; }],
  ['a text for a list', '/0/sourceItems', c => { c[0].sourceItems = 'Example Slides.app'; }],
  ['a negative size', '/0/installerSize', c => { c[0].installerSize = -1; }],
  ['a header without its value', '/5', c => { delete c[5].requestHeaderValue; }],
]);
check(!entries({appName: 'Slides'}), 'an entry outside of an array is refused');

// The manifest tells the same keys, types and defaults as the schema.
const schemaTypes = {string: 'string', integer: 'integer', boolean: 'boolean', array: 'array', dictionary: 'object'};
const differences = (subkeys, schema, path) => subkeys.flatMap(key => {
  const own = schema.properties[key.pfm_name];
  if (!own) return [`${path}${key.pfm_name}`];
  const same = schemaTypes[key.pfm_type] === own.type && key.pfm_default === own.default &&
      JSON.stringify(key.pfm_range_list) === JSON.stringify(own.enum);
  const below = own.type === 'object' ? differences(key.pfm_subkeys, own, `${path}${key.pfm_name}.`) : [];
  return same ? below : [`${path}${key.pfm_name}`, ...below];
});
const ownKeys = readList(manifestFile).pfm_subkeys.filter(key => !key.pfm_name.startsWith('Payload'));
const different = differences(ownKeys, read(`${packaging}/preferences.schema.json`), '');
check(ownKeys.length === 3 && different.length === 0, `manifest and schema agree${different.map(key => `, not in ${key}`).join('')}`);

process.exit(failures === 0 ? 0 : 1);
