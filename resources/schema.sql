-- The template of data.db: the three tables and a sample plan.
--
-- All values are texts. The flags hold 'true' or 'false'; times are 'HH:mm', dates 'yyyy-MM-dd', and
-- the history's moments 'yyyy-MM-dd HH:mm:ss'. `history.end` is NULL until a playback has ended, so it
-- has neither "not null" nor a default.

create table plan(
    id      text not null primary key,
    title   text not null,
    begin   text not null,
    end     text not null,
    music   text not null,
    content text not null,
    isloop  text not null,
    ismusic text not null,
    week0   text not null,
    week1   text not null,
    week2   text not null,
    week3   text not null,
    week4   text not null,
    week5   text not null,
    week6   text not null
);

create table holiday(
    id    text not null primary key,
    title text not null,
    begin text not null,
    end   text not null
);

create table history(
    id    text not null primary key,
    title text not null,
    begin text not null,
    end   text
);

-- On no weekday, so that it never starts by itself.
insert into plan values(
    '5B0C2F64-6B5C-4E7B-9A51-0F3D7C1E8A20', 'Sample chime', '03:00', '03:01', 'chime.wav', 'chime.wav',
    'false', 'true', 'false', 'false', 'false', 'false', 'false', 'false', 'false');
