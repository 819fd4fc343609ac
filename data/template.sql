-- The station that every new one starts as: one channel of stage in feet, readings an hour apart,
-- logger files with the date and time in one column (Type 1). It shows a yearly sheet as soon as a
-- file is imported: neither offsets nor a rating are asked for until the journal has rows.
--
-- The order of columns is part of the format. Declared types tell how a value is converted when it is
-- written. Records is kept in the order of its key, so that a period is one run of the file and a second
-- reading of the same time is refused.

PRAGMA page_size = 4096;

BEGIN;

CREATE TABLE Information (
    Name TEXT(50),
    notes TEXT(255),
    channels SMALLINT,
    noofrec TEXT,
    begdate TEXT,
    EndDate TEXT,
    importdir TEXT,
    importtype SMALLINT,
    importdtwidth SMALLINT,
    outputchannel SMALLINT,
    timeincrement DATETIME,
    Conversion SMALLINT,
    calibration SMALLINT,
    secondary SMALLINT,
    digitsout SMALLINT,
    importwidth SMALLINT,
    graphmax DOUBLE,
    graphmin DOUBLE,
    outputseries SMALLINT,
    outputfactor DOUBLE,
    outputfactorstring TEXT,
    reclabel TEXT,
    recdesc TEXT(255),
    recsta TEXT(255),
    convlabel TEXT,
    convdesc TEXT(255)
);

CREATE TABLE Records (
    "DateTime" DATETIME NOT NULL PRIMARY KEY,
    chan1 SINGLE
) WITHOUT ROWID;

CREATE TABLE Calibration (
    "DateTime" DATETIME,
    chan SMALLINT,
    read1 DOUBLE,
    actual1 DOUBLE,
    read2 DOUBLE,
    discharge DOUBLE,
    notes TEXT(255)
);

CREATE TABLE ConversionEq (
    "DateTime" DATETIME,
    chan SMALLINT,
    A DOUBLE,
    r DOUBLE,
    c DOUBLE,
    notes TEXT(255),
    RatingTable SINGLE
);

CREATE TABLE ConversionT (
    chan SMALLINT,
    "DateTime" DATETIME,
    depth DOUBLE,
    flow DOUBLE
);

-- outputfactor 1.98 turns the sum of daily mean flows in cubic feet a second into acre-feet.
INSERT INTO Information
    (channels, noofrec, importtype, importdtwidth, outputchannel, timeincrement,
     Conversion, calibration, secondary, digitsout, importwidth, graphmax, graphmin,
     outputseries, outputfactor, outputfactorstring, reclabel, recdesc, recsta, convlabel, convdesc)
VALUES
    (1, 'Empty', 0, 16, 1, 1.0 / 24.0,
     0, 0, 0, 2, 9, 10.0, 0.0,
     11000, 1.98, 'ac-ft', 'ft', 'Stage', 'Channel 1', 'cfs', 'Discharge');

COMMIT;
