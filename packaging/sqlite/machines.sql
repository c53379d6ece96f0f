-- Puts what "tavctl list --json" says of recorded machines into an SQLite database:
--
--     tavctl list --dump lab --json | sqlite3 lab.db ".read machines.sql"
--
-- A recording that is there already is replaced by what is new of it; the others stay. Times,
-- sites and owners go into tables of your own, joined by the machine or the recording.

CREATE TABLE IF NOT EXISTS machines (
    recording TEXT PRIMARY KEY,  -- the recorded bus, as it was named
    machine TEXT NOT NULL,       -- rack7 of lab/rack7.dump
    failure TEXT                 -- why it could not be looked at; null when it was
) WITHOUT ROWID;

CREATE TABLE IF NOT EXISTS devices (
    recording TEXT NOT NULL REFERENCES machines,
    position INTEGER NOT NULL,   -- among all devices of the recording, from 0
    name TEXT NOT NULL,
    stored INTEGER NOT NULL,     -- whether the name is stored: 1 or 0
    model TEXT NOT NULL,
    category TEXT NOT NULL,
    address TEXT NOT NULL,
    slot_path TEXT,
    width INTEGER,               -- lanes with which the link upstream runs, and can at most
    possible_width INTEGER,
    degraded INTEGER,            -- whether that link runs below what both ends can: 1, 0 or null
    PRIMARY KEY (recording, position)
) WITHOUT ROWID;

CREATE TABLE IF NOT EXISTS ports (
    recording TEXT NOT NULL REFERENCES machines,
    position INTEGER NOT NULL,   -- of the device
    port INTEGER NOT NULL,       -- among those of the device, from 0
    label TEXT NOT NULL,
    secondary_bus INTEGER,
    occupied INTEGER,            -- 1, 0 or null, as degraded
    width INTEGER,
    possible_width INTEGER,
    degraded INTEGER,
    PRIMARY KEY (recording, position, port)
) WITHOUT ROWID;

CREATE TABLE IF NOT EXISTS absent (
    recording TEXT NOT NULL REFERENCES machines,
    name TEXT NOT NULL,
    model TEXT NOT NULL,
    slot_path TEXT NOT NULL,
    place TEXT                   -- what stands nearest to where it stood
);

CREATE VIEW IF NOT EXISTS free_connectors AS
    SELECT machine, recording, name, label, ports.possible_width
    FROM ports JOIN devices USING (recording, position) JOIN machines USING (recording)
    WHERE occupied = 0;

CREATE VIEW IF NOT EXISTS degraded_links AS
    SELECT machine, recording, name, NULL AS label, width, possible_width
    FROM devices JOIN machines USING (recording) WHERE degraded = 1
    UNION ALL
    SELECT machine, recording, name, label, ports.width, ports.possible_width
    FROM ports JOIN devices USING (recording, position) JOIN machines USING (recording)
    WHERE ports.degraded = 1;

-- The document is one line without characters 30 and 31, at which this form would part it.
CREATE TEMP TABLE document (text TEXT NOT NULL);
.bail on
.import --ascii /dev/stdin document

CREATE TEMP TABLE whole (documents INTEGER,
    CONSTRAINT "one document on standard input" CHECK (documents = 1));
INSERT INTO whole SELECT count(*) FROM document;

BEGIN;
CREATE TEMP TABLE found AS
    SELECT value ->> 'recording' AS recording, value AS machine
    FROM document, json_each(document.text, '$.machines');
-- What was named twice is there once.
DELETE FROM found
    WHERE rowid NOT IN (SELECT max(rowid) FROM found GROUP BY recording);
DELETE FROM ports WHERE recording IN (SELECT recording FROM found);
DELETE FROM devices WHERE recording IN (SELECT recording FROM found);
DELETE FROM absent WHERE recording IN (SELECT recording FROM found);

INSERT OR REPLACE INTO machines
    SELECT recording, machine ->> 'machine', machine ->> '$.failure.reason' FROM found;

CREATE TEMP TABLE found_devices AS
    SELECT recording, device.value AS device
    FROM found, json_each(machine, '$.devices') AS device;
INSERT INTO devices
    SELECT recording, device ->> 'index', device ->> 'name', device ->> 'stored',
           device ->> 'model', device ->> 'category', device ->> 'address', device ->> 'slotPath',
           device ->> '$.upstreamLink.negotiatedWidth', device ->> '$.upstreamLink.possibleWidth',
           device ->> '$.upstreamLink.degraded'
    FROM found_devices;
INSERT INTO ports
    SELECT recording, device ->> 'index', port.key, port.value ->> 'label',
           port.value ->> 'secondaryBus', port.value ->> 'occupied',
           port.value ->> 'negotiatedWidth', port.value ->> 'possibleWidth',
           port.value ->> 'degraded'
    FROM found_devices, json_each(device, '$.ports') AS port;
INSERT INTO absent
    SELECT recording, gone.value ->> 'name', gone.value ->> 'model', gone.value ->> 'slotPath',
           gone.value ->> 'place'
    FROM found, json_each(machine, '$.absent') AS gone;
COMMIT;
SELECT printf('%d recordings, %d devices', count(*), (SELECT count(*) FROM found_devices))
    FROM found;
