-- Rows as they were shipped before: a store that still holds one of them gets today's, and one that lacks a row with
-- nothing to it gets that row. What an operator has edited stays.

INSERT INTO element VALUES ('XX_InvalidNumber', '//*[@data-testid=''confirm-popup'' or @role=''dialog''][contains(.,''on WhatsApp'') or contains(.,''url is invalid'')]');
INSERT INTO element VALUES ('XX_Info', '//*[@data-testid=''chat-butterbar'']');
INSERT INTO element VALUES ('XX_Update', '//*[@data-testid=''chat-butterbar'']//button[contains(.,''Refresh'')]');
INSERT INTO element VALUES ('XX_SendFileButton', '(//div[@role=''button''][starts-with(@aria-label,''Send'')][.//*[@data-icon=''wds-ic-send-filled'' or @data-testid=''wds-ic-send-filled'']])[last()]');
INSERT INTO element VALUES ('XX_MessageResults', '//*[@id=''pane-side'']//*[not(*)][translate(normalize-space(.),''MESAG'',''mesag'')=''messages''][not(ancestor::*[@role=''row'' or @role=''listitem''][.//span[@title]])]');
INSERT INTO element VALUES ('XX_UseHere', '(//*[@data-testid=''confirm-popup'' or @role=''dialog'']//*[self::button or @role=''button''][contains(.,''Use here'') or contains(.,''Use Here'')])[1]');
INSERT INTO element VALUES ('XX_UnreadBadge', './/*[@data-testid=''icon-unread-count'' or contains(@aria-label,''unread'')]');
INSERT INTO element VALUES ('XXInfo1', 'Phone not connected*|*Trying to reach phone*');
INSERT INTO element VALUES ('XXInfo2', 'Computer not connected*|*No internet*|Connecting*');
INSERT INTO element VALUES ('XXInfo3', 'Phone number shared via url is invalid.*|*isn''t on WhatsApp*|*isn’t on WhatsApp*');
INSERT INTO element VALUES ('XXTyping', 'typing');
INSERT INTO element VALUES ('XXDraft', 'Draft:');
INSERT INTO element VALUES ('XX_MessageRow', '//*[@id=''main'']//*[@data-id]');
INSERT INTO element VALUES ('XXUseHereText', '');
INSERT INTO element VALUES ('XXUpdateText', '');
INSERT INTO element VALUES ('XXMessagesText', '');
